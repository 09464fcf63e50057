#!/bin/sh
# Reads the two sides off the picture and weighs the edges between them.
#   maxcut_test.sh PROGRAM DATA_FOLDER
graph=$2/torus.txt
printed=$("$1" "$graph" 60 500) || { echo "exit status $?"; exit 1; }
echo "$printed" | awk '
  NR == FNR { if (!/^#/ && NF == 3) edges[++count] = $0; next }
  /^( \.|##)+$/ { for (i = 1; i < length($0); i += 2) side[++nodes] = substr($0, i, 2) }
  /^TTS = / { ++progress_lines }
  /^cut / { told = $2 + 0 }
  END {
    for (e = 1; e <= count; ++e) {
      split(edges[e], edge)
      if (side[edge[1]] != side[edge[2]]) cut += edge[3]
    }
    if (nodes != 720 || cut < 500 || cut != told || progress_lines == 0) {
      print nodes " nodes drawn, cut " cut ", told " told ", progress lines " progress_lines
      exit 1
    }
  }' "$graph" - || { echo "$printed"; exit 1; }
