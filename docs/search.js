// The search box: finds functions, records, C++ members, guides and examples by name and text, and tolerates
// typos. build.py writes their index, and the words of other libraries (synonyms.txt).
"use strict";

(() => {
  const SHOWN = 60;
  const LEAST = 0.5; // names this similar to the query are found even if one of its words matches nothing

  const OTHERS = 0.9; // the weight of what is not a function
  const SUMMARY = 0.4, TEXT = 0.25; // the weights of words that are not in the name

  const wordsOf = (text) => text.toLowerCase().split(/[^a-z0-9]+/).filter((word) => word !== "" && word !== "mub");
  const longWordsOf = (text) => [...new Set(wordsOf(text).filter((word) => word.length > 2))];
  const entries = window.MUB_INDEX.map(([name, module, url, summary, allocates, text]) => ({
    name, module, url, allocates,
    summary,
    weight: allocates === null ? OTHERS : 1,
    words: wordsOf(name),
    described: longWordsOf(summary),
    text: longWordsOf(text ?? ""),
  }));

  // The query, and the queries with a word of another library replaced by one of ours; that comes last, after the
  // module, as it does in names.
  function phrasings(query) {
    const asked = ` ${wordsOf(query).join(" ")} `;
    const found = Object.entries(window.MUB_SYNONYMS).filter(([foreign]) => asked.includes(` ${foreign} `));
    return [asked, ...found.flatMap(([foreign, ours]) => ours.map((words) => asked.replace(` ${foreign} `, " ") + words))];
  }

  // The edit distance: letters added, removed, changed, or exchanged with a neighbour.
  function distance(a, b) {
    let before = [], last = Array.from({length: b.length + 1}, (_, i) => i);
    for (let i = 1; i <= a.length; i++) {
      const row = [i];
      for (let k = 1; k <= b.length; k++) {
        const changed = a[i - 1] === b[k - 1] ? 0 : 1;
        row[k] = Math.min(last[k] + 1, row[k - 1] + 1, last[k - 1] + changed);
        const exchanged = i > 1 && k > 1 && a[i - 1] === b[k - 2] && a[i - 2] === b[k - 1];
        if (exchanged) row[k] = Math.min(row[k], before[k - 2] + 1);
      }
      before = last;
      last = row;
    }
    return last[b.length];
  }

  // From 1, the same word, to 0, not similar enough to show.
  function similarity(asked, word) {
    if (asked === word) return 1;
    if (word.startsWith(asked)) return 0.75 + 0.2 * asked.length / word.length;
    const errors = asked.length < 3 ? 0 : asked.length < 6 ? 1 : 2;
    const found = Math.abs(asked.length - word.length) <= errors ? distance(asked, word) : Infinity;
    if (found <= errors) return 0.9 * (1 - found / Math.max(asked.length, word.length));
    return asked.length > 2 && word.includes(asked) ? 0.55 : 0;
  }

  // The similarity to each word is computed only once per query, as many names share their words.
  function scorer(query) {
    const asked = wordsOf(query);
    const whole = asked.join("_");
    const known = asked.map(() => new Map());
    const best = (i, words) => Math.max(0, ...words.map((word) => {
      if (!known[i].has(word)) known[i].set(word, similarity(asked[i], word));
      return known[i].get(word);
    }));
    return (f) => {
      if (asked.length === 0) return 1;
      const name = f.words.join("_");
      const whole_name = Math.max(0, 1 - distance(whole, name) / Math.max(whole.length, name.length));
      const scores = asked.map((_, i) =>
        Math.max(best(i, f.words), SUMMARY * best(i, f.described), TEXT * best(i, f.text)));
      if (scores.includes(0) && whole_name < LEAST) return 0;
      return whole_name + scores.reduce((sum, score) => sum + score, 0) / scores.length;
    };
  }

  function find(query, module, allocates) {
    const scorers = phrasings(query).map(scorer);
    const score = (f) => f.weight * Math.max(...scorers.map((score) => score(f)));
    return entries
      .filter((f) => (!module || f.module === module) && (!allocates || f.allocates === (allocates === "yes")))
      .map((f) => ({f, score: score(f)}))
      .filter((hit) => hit.score > 0)
      .sort((a, b) => b.score - a.score || a.f.name.length - b.f.name.length || (a.f.name < b.f.name ? -1 : 1))
      .map((hit) => hit.f);
  }

  const element = (id) => document.getElementById(id);
  const [input, panel, list] = [element("search"), element("search-panel"), element("hits")];
  const [byModule, byAllocates, count] = [element("search-module"), element("search-allocates"), element("search-count")];
  let active = -1;

  function coded(text) {
    const code = document.createElement("code");
    code.textContent = text;
    return code;
  }

  function row(f, i) {
    const item = document.createElement("li");
    const link = document.createElement("a");
    const summary = document.createElement("span");
    Object.assign(item, {id: "hit-" + i, role: "option"});
    Object.assign(link, {href: f.url, tabIndex: -1});
    // Text between backquotes is code.
    summary.append(...f.summary.split("`").map((part, k) => (k % 2 ? coded(part) : part)));
    link.append(coded(f.name), " ", summary);
    item.append(link);
    return item;
  }

  function activate(index) {
    const items = list.children;
    if (items[active]) items[active].setAttribute("aria-selected", "false");
    active = items.length === 0 ? -1 : (index + items.length) % items.length;
    if (active < 0) return input.removeAttribute("aria-activedescendant");
    items[active].setAttribute("aria-selected", "true");
    items[active].scrollIntoView({block: "nearest"});
    input.setAttribute("aria-activedescendant", items[active].id);
  }

  function open(is_open) {
    panel.hidden = !is_open;
    input.setAttribute("aria-expanded", String(is_open));
  }

  function update() {
    const found = find(input.value, byModule.value, byAllocates.value);
    list.replaceChildren(...found.slice(0, SHOWN).map(row));
    count.textContent = found.length === 1 ? "1 result" : `${found.length} results`;
    open(true);
    activate(0);
    list.scrollTop = 0;
  }

  function follow() {
    if (active < 0) return;
    open(false);
    input.blur();
    window.location.href = list.children[active].firstChild.href;
  }

  const keys = {
    ArrowDown: () => (panel.hidden ? update() : activate(active + 1)),
    ArrowUp: () => (panel.hidden ? update() : activate(active - 1)),
    Enter: follow,
    Escape: () => { open(false); input.blur(); },
  };
  input.addEventListener("keydown", (event) => {
    if (!keys[event.key] || event.isComposing) return;
    event.preventDefault();
    keys[event.key]();
  });
  panel.addEventListener("keydown", (event) => {
    if (event.key !== "Escape") return;
    open(false);
    input.focus();
  });
  input.addEventListener("input", update);
  input.addEventListener("click", update);
  byModule.addEventListener("change", update);
  byAllocates.addEventListener("change", update);
  list.addEventListener("click", () => open(false));
  for (const kind of ["focusin", "pointerdown"])
    document.addEventListener(kind, (event) => { if (!input.form.contains(event.target)) open(false); });
  document.addEventListener("keydown", (event) => {
    const typing = event.target.closest("input, select, textarea, [contenteditable]");
    if (event.key !== "/" || typing || event.ctrlKey || event.metaKey || event.altKey) return;
    event.preventDefault();
    input.focus();
    input.select();
    update();
  });

  for (const module of [...new Set(entries.map((f) => f.module))].sort()) byModule.add(new Option(module, module));
  input.form.hidden = false;

  // The contents at the side: open if the window is wide enough, with the current page marked.
  const contents = document.querySelector("nav.modules details");
  contents.open = window.matchMedia("(min-width: 60rem)").matches;
  const here = window.location.pathname.split("/").pop() || "index.html";
  for (const link of contents.querySelectorAll("a"))
    if (link.getAttribute("href") === here) link.setAttribute("aria-current", "page");
})();
