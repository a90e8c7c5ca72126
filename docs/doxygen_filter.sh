#!/bin/sh
# Turns a public header's plain comments into documentation comments, for Doxygen.
# usage: doxygen_filter.sh HEADER
#   a comment that opens the file         the file's description, its conventions a numbered list
#   a comment in front of a declaration   its description; what stands in columns stays in columns
#   a comment behind a member             the member's description
exec awk '
  # Text in which nothing is a command or a tag for the tool.
  function plain(text) {
    gsub(/[\\@<>#%"]/, "\\\\&", text)
    return text
  }
  function columns(on) {
    if (on != in_columns) print (on ? " * @verbatim" : " * @endverbatim")
    in_columns = on
  }
  function close_comment() {
    columns(0)
    print " */"
    inside = of_file = 0
  }
  function describe(line) {
    if (of_file) {
      if (sub(/^ +[0-9]+\. /, "", line)) line = "-# " plain(line)
      else line = (line ~ /^       / ? "   @n" : line == "" ? "" : "   ") plain(line)
      print " * " line
      return
    }
    columns(line ~ /^ +[^ ]/ || line ~ /[^ ]  +[^ ]/)
    if (in_columns) print line
    else if (sub(/^Returns /, "", line)) print " * @return " plain(line)
    else print " * " plain(line)
  }
  !inside && /^ *\/\* ---- / { next }
  !inside && /^ *\/\*/ {
    print "/**" (FNR == 1 ? " @file" : "")
    inside = 1
    of_file = FNR == 1
    line = $0
    sub(/^ *\/\* ?/, "", line)
    closing = sub(/ *\*\/ *$/, "", line)
    if (line != "") describe(line)
    if (closing) close_comment()
    next
  }
  inside {
    line = $0
    closing = sub(/ *\*\/ *$/, "", line)
    sub(/^ *\*? ?/, "", line)
    if (!closing || line != "") describe(line)
    if (closing) close_comment()
    next
  }
  # A comment behind a member: of one line, or going on below.
  (place = index($0, "/*")) > 1 && !/^ *#/ {
    text = substr($0, place + 2)
    closing = sub(/ *\*\/ *$/, "", text)
    print substr($0, 1, place - 1) "/**<" plain(text) (closing ? " */" : "")
    inside = !closing
    next
  }
  { print }' "$1"
