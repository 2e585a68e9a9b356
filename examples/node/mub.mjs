// libmub for Node.js. Declares every record, constant, callback and function from mub-api.json at run time.
//
//   const mub = load({ library: "libmub.so.1", api: "/usr/share/mub/mub-api.json" });
//   const words = mub.make("mub_hash");
//   mub.mub_hash_init(words, 1, 0);
//
// A record is native memory, allocated with make(), released with free() and passed by address; read()
// returns its fields. For a pointer to a number pass an array of one element, [0], which receives the result.
// Texts and keys are Buffers, or strings where the C type is char.
import { readFileSync } from "node:fs";
import koffi from "koffi";

const isPointer = (type) => type.endsWith("*") || type.includes("(*)");
const target = (type) => type.slice(0, -1).trim().replace(/^const /, "");

export function load({ library, api }) {
  const description = JSON.parse(readFileSync(api, "utf8"));
  const native = koffi.load(library ?? description.soname);
  const records = new Map();
  const callbacks = new Map();

  // Records and callbacks refer to each other, so pointers inside them are void *.
  const stored = (type) => {
    const [element, length] = type.match(/^([^[]*)(?:\[(\d+)\])?$/).slice(1);
    const kind = isPointer(element) ? "void *" : records.get(element) ?? element;
    return length === undefined ? kind : koffi.array(kind, Number(length));
  };

  // Declares the records that a record contains first.
  const declareRecord = (record) => {
    if (records.has(record.name)) return;
    const contained = record.fields.map((field) => description.records.find(({ name }) => name === field.type));
    contained.filter(Boolean).forEach(declareRecord);
    const type = koffi.struct(record.name, Object.fromEntries(record.fields.map(({ name, type }) => [name, stored(type)])));
    if (koffi.sizeof(type) !== record.size ||
      record.fields.some((field) => koffi.offsetof(type, field.name) !== field.offset)) throw new Error(`${record.name}: layout differs from the library's`);
    records.set(record.name, type);
  };

  const declareCallback = ({ name, returns, parameters }) => {
    const types = parameters.map(({ type }) => (isPointer(type) ? "void *" : type));
    callbacks.set(name, koffi.proto(name, returns.type, types));
  };

  const passed = ({ type, direction }) => {
    if (type === "...") return "...";
    if (callbacks.has(type)) return koffi.pointer(callbacks.get(type));
    if (!isPointer(type)) return type;
    const pointee = target(type);
    if (pointee === "char" && direction === "in") return "str";
    if (pointee === "void" || pointee.endsWith("const") || records.has(pointee) || direction === "in") return "void *";
    const pointer = koffi.pointer(isPointer(pointee) ? "void *" : pointee);
    return direction === "out" ? koffi.out(pointer) : koffi.inout(pointer);
  };

  // Rejects null where it is not allowed: it would crash the process.
  const checked = ({ name, parameters }, call) => (...values) => {
    const required = ({ type, nullable }) => (isPointer(type) || callbacks.has(type)) && !nullable;
    const missing = parameters.find((parameter, i) => values[i] === null && required(parameter));
    if (missing) throw new TypeError(`${name}: ${missing.name} may not be null`);
    return call(...values);
  };

  description.records.forEach(declareRecord);
  description.callbacks.forEach(declareCallback);
  const functions = description.functions.map((found) => {
    const { name, returns, parameters } = found;
    const result = returns.type === "const char *" ? "str" : isPointer(returns.type) ? "void *" : returns.type;
    const call = native.func(name, result, parameters.map(passed));
    return [name, checked(found, call)];
  });

  return {
    ...Object.fromEntries(functions),
    ...Object.fromEntries(description.constants.map(({ name, value }) => [name, value])),
    description,
    make: (name) => koffi.alloc(records.get(name), 1),
    free: (record) => koffi.free(record),
    read: (address, name) => koffi.decode(address, records.get(name)),
    bytes: (address, offset, length) => Buffer.from(koffi.decode(address, offset, koffi.array("uint8_t", length))),
    // A callback is valid until it is released.
    callback: (name, method) => koffi.register(method, koffi.pointer(callbacks.get(name))),
    release: (callback) => koffi.unregister(callback),
  };
}
