# Shows Doxygen a header as a reader sees it: indented lines of a comment are a table, and a "//"
# comment between empty lines is the heading of the declarations that follow it. The fields "Writes:"
# and "System:" become paragraphs with a heading.

# Prints a line of documentation: as text, or as a line of a table, which Markdown takes for code.
function doc(text,    is_row) {
  is_row = text ~ /^   / && text !~ /^ *- /
  if (is_row != in_table) print margin "///"
  in_table = is_row
  if (match(text, /^ (Writes|System):/)) {
    print margin "/// \\par " substr(text, 2, RLENGTH - 2)
    text = substr(text, RLENGTH + 1)
  }
  if (!is_row) gsub(/'%'/, "'\\%'", text)  # a lone one would be swallowed
  print margin "///" (is_row ? "    " : "") text
}

function end_group() {
  if (group) print "///@}\n"
  group = 0
}

# Prints the comment that was held back: as a heading, named by its first words, or as it was.
function release(is_heading,    text, first, name, i) {
  if (!held) return
  if (!is_heading) {
    for (i = 1; i <= held; ++i) print "//" line[i]
    held = 0
    return
  }
  end_group()
  margin = ""
  for (first = 1; first <= held && line[first] != ""; ++first) text = text line[first]
  match(text " ", /[.:?] /)
  name = substr(text, 2, RSTART - 2)
  if (substr(text, RSTART, 1) != ":") text = substr(text, RSTART + 1)
  print "/// \\name " name
  doc(text)
  for (i = first; i <= held; ++i) doc(line[i])
  in_table = 0
  print "///@{\n"
  held = 0
  group = 1
}

/^\/\/( |$)/ && (held || previous == "") { line[++held] = substr($0, 3); previous = $0; next }
{ release($0 == ""); previous = $0 }
/^ *\/\/\/( |$)/ {
  margin = substr($0, 1, index($0, "/") - 1)
  doc(substr($0, length(margin) + 4))
  next
}
{ in_table = 0 }
/^#(endif|pragma)/ { end_group() }
{ print }
