# Lists what the functions of the headers touch: the fields "Writes:" and "System:" of their
# comments, as a table in Markdown.

# Takes the columns of the table from the comment and the declaration that were read.
function show(    name) {
  name = declaration
  sub(/\(.*/, "", name)
  sub(/.*[ *&]/, "", name)
  if (class) name = class "::" name
  if (field["Writes"] || field["System"]) {
    printf "| `%s` | `%s` | %s | %s |\n", name, header, field["Writes"], field["System"]
  }
}

function forget() {
  delete field
  declaration = current = ""
}

BEGIN {
  print "# What the functions touch {#effects}\n"
  print "Taken from the fields \"Writes\" and \"System\" of the headers. A function that is not listed"
  print "creates, changes and deletes nothing on disk, and uses no files of the system, no environment"
  print "variables, no ports and no programs. Capital letters in a path stand for an argument. Whatever"
  print "makes a message reads the catalog: see kwinstutil.h.\n"
  print "| Function | Header | Writes | System |"
  print "|---|---|---|---|"
}

FNR == 1 {
  header = FILENAME
  sub(/.*\//, "", header)
  class = ""
  forget()
}

/^class / { class = $3 }
/^};/ { class = "" }

/^ *\/\/\/ (Writes|System): / {
  current = substr($2, 1, length($2) - 1)
  sub(/^ *\/\/\/ [A-Z][a-z]*: /, "")
  field[current] = $0
  next
}
/^ *\/\/\/ / && current {
  sub(/^ *\/\/\/ */, "")
  field[current] = field[current] " " $0
  next
}
/^ *\/\// || /^$/ {
  current = ""
  if (/^$/) forget()
  next
}
{ declaration = declaration $0 }
/[;{]$/ {
  show()
  forget()
}
