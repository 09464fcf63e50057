# Turns the plain comments of the C headers into what Doxygen reads. The first comment describes the
# file. A banner, "---- Title ----", begins a topic. A comment before declarations goes to each of
# them, down to the next blank line, and one before a blank line to the topic.

# Prose as it is meant: its characters are no markup, rows that are indented keep their layout, and
# numbered items are a list.
function render(text,    lines, count, i, out, in_rows, in_list) {
  sub(/\n+$/, "", text)
  count = split(text, lines, "\n")
  for (i = 1; i <= count; ++i) {
    if (sub(/^ *[0-9]+\. /, "&", lines[i]) && !in_rows) {
      in_list = 1
      sub(/^ */, "", lines[i])
    }
    if (!in_list && !in_rows && lines[i] ~ /^  /) {
      out = out "\\verbatim\n"
      in_rows = 1
    } else if (in_rows && lines[i] ~ /^[^ ]/) {
      out = out "\\endverbatim\n"
      in_rows = 0
    }
    out = out (in_rows ? lines[i] : escaped(lines[i])) "\n"
  }
  return out (in_rows ? "\\endverbatim\n" : "")
}

function escaped(line) {
  gsub(/[\\<>#@%*]/, "\\\\&", line)
  gsub(/&/, "\\&amp;", line)
  gsub(/ _/, " \\\\_", line)
  sub(/\.\.$/, ".\\.", line)
  return line
}

function document(text) { print "/**\n" text "*/" }

function begin_topic(title) {
  end_topic()
  gsub(/^---- *| *-*[\n ]*$/, "", title)
  topic = FILENAME "_" title
  gsub(/^.*\//, "", topic)
  gsub(/[^A-Za-z0-9]/, "_", topic)
  document("\\defgroup " topic " " title "\n")
}

# Topics have to be described before they are opened.
function open_topic() {
  if (topic != "" && !is_open) document("\\addtogroup " topic "\n@{\n")
  is_open = topic != ""
}

function end_topic() {
  if (is_open) document("@}\n")
  is_open = 0
  topic = ""
}

function end_comment() {
  in_comment = 0
  if (comments++ == 0) {
    document("\\file\n" render(comment))
  } else if (comment ~ /^---- /) {
    begin_topic(comment)
  } else {
    contract = render(comment)
    is_used = 0
  }
}

!in_comment && /^\/\* / {
  in_comment = 1
  comment = ""
  sub(/^\/\* /, "")
}
in_comment {
  is_last = sub(/ *\*\/$/, "")
  sub(/^ \* ?/, "")
  comment = comment $0 "\n"
  if (is_last) end_comment()
  next
}

/^$/ {
  if (contract != "" && !is_used) document("\\addtogroup " topic "\n" contract)
  contract = ""
}
/^#ifdef __cplusplus/ { end_topic() }
/^[A-Za-z]/ { open_topic() }
contract != "" && /^[A-Za-z]/ {
  document(contract)
  is_used = 1
}
{
  sub(/; *\/\* /, "; /**< ")
  sub(/^\/\/ /, (FNR == 1 ? "/// \\file\n" : "") "/// ")
  print
}
