# Takes the fenced blocks of a page apart, for page_test.sh, into files of the folder `dir`:
#
#   program.cpp, program.expected   the cpp blocks as one program, and what it is to print
#   N.cpp or N.c, and N.expected    a program of its own: a block with a main
#   N.quote, N.expected             the name of a file, and below it a block quoted from there
#   whole.quote                     the same of the cpp blocks that together are a file
#   N.sh, N.expected                shell lines
#   prose                           the rest
#
# N is the line of the page on which the block begins. Without an output there is no N.expected. A
# form feed ends the output of each cpp block.
BEGIN { lang = file = quoted = whole = "" }

function complain(message) {
  print page ":" NR ": " message
  failed = 1
}

function end_output() {
  if (file == dir "/program") print "\f" > (file ".expected")
  file = ""
}

function start(kind) {
  end_output()
  lang = kind
  line = NR + 1
  code = plain_code = includes = ""
  is_program = 0
}

function finish() {
  file = dir "/" line
  if (quoted != "") {
    printf "%s\n%s", quoted, code > (file ".quote")
  } else if (whole != "" && lang == "cpp") {
    file = dir "/whole"
    printf "%s", (is_begun++ ? "" : whole "\n") code > (file ".quote")
  } else if (lang != "cpp" || is_program) {
    printf "%s", code > (file "." lang)
  } else {
    file = dir "/program"
    head = head includes
    body = body "#line " line " \"" page "\"\n" plain_code "std::cout << '\\f' << std::endl;\n"
  }
  quoted = lang = ""
}

lang == "" && /^<!-- from .* -->$/ { quoted = $3 }
lang == "" && /^<!-- all of .* -->$/ { whole = $4 }
lang == "" && /^```(cpp|c|sh)$/ { start(substr($0, 4)); next }
lang == "" && /^```text$/ { lang = "text"; if (file == "") complain("output of nothing"); next }
lang == "" && /^```/ { complain("a block of no known kind"); exit }
lang == "" { print > (dir "/prose"); next }

/^```$/ && lang == "text" { end_output(); lang = ""; next }
/^```$/ { finish(); next }
lang == "text" { if (file != "") print > (file ".expected"); next }

/^int main\(/ { is_program = 1 }
/^#include / { includes = includes $0 "\n" }
{
  code = code $0 "\n"
  plain_code = plain_code (/^#include / ? "" : $0) "\n"
}

END {
  end_output()
  if (lang != "") complain("the last block does not end")
  if (body != "") {
    printf "#include <iostream>\n%sint main() {\n%s}\n", head, body > (dir "/program.cpp")
  }
  exit failed
}
