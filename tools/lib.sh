# Shared by the scripts beside it; sourced from the project's root.

# The names that the public headers declare, sorted.
declared_names() {
  # A declaration starts with MUB_API and names its function right before the first parenthesis, its object right
  # before the first bracket.
  cat include/*.h | tr '\n' ' ' | grep -oE 'MUB_API [^;]*' |
    sed -E 's/[([].*//; s/ *$//; s/.*[ *]//' | LC_ALL=C sort -u
}
