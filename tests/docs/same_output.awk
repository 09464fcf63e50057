# same_output.awk EXPECTED PRINTED: compares line by line. In what is expected "..." stands for any
# text of a line, and for any lines if it stands alone.
function matches(text, line) {
  gsub(/[][\\^$.|?*+(){}]/, "\\\\&", text)
  gsub(/\\\.\\\.\\\./, ".*", text)
  return line ~ ("^" text "$")
}

FILENAME == ARGV[1] { expected[++expected_count] = $0; next }
{ printed[++printed_count] = $0 }

END {
  p = 1
  for (e = 1; e <= expected_count; ++e) {
    if (expected[e] == "...") {
      while (p <= printed_count && (e == expected_count || !matches(expected[e + 1], printed[p]))) ++p
    } else if (p <= printed_count && matches(expected[e], printed[p])) {
      ++p
    } else {
      break
    }
  }
  if (e > expected_count && p > printed_count) exit 0
  print "expected: " (e <= expected_count ? expected[e] : "nothing more")
  print "printed:  " (p <= printed_count ? printed[p] : "nothing more")
  exit 1
}
