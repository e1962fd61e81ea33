# Doxygen's view of a header. In a run of declarations without an empty line the comment above the
# first is repeated for each of the others, and what stands behind a declaration ("// metres") is its
# comment. Lines keep their numbers.
function balance(text) { return gsub(/[{(]/, "", text) - gsub(/[})]/, "", text) }

function forget() { shared = ""; in_comment = open = depth = 0 }

/^ *\/\/\// {
  if (!in_comment) shared = ""
  in_comment = 1
  line = $0
  sub(/^ *\/\/\/ ?/, "", line)
  shared = shared " " line
  print
  next
}
/^ *$/ || /^ *#/ || /^ *(public|private|protected):/ { forget(); print; next }
/^ *\/\/ / {  # goes on with the comment behind the line above
  if (behind) sub(/\/\/ /, "///< ")
  print
  next
}
{
  code = $0
  behind = sub(/ *\/\/ .*/, "", code)
  if (behind) sub(/\/\/ /, "///< ")
  if (code ~ /~|= delete/) forget()
  if (shared != "" && !in_comment && !open && !behind && code !~ /^ *[})]/) printf "/**%s */ ", shared
  in_comment = 0
  depth += balance(code)
  open = depth > 0 || code !~ /[;},{] *$/
  if (code ~ /(class|struct|enum|namespace)[^;]*\{ *$/) forget()
  print
}
