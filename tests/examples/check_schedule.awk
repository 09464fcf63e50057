# Reads a job shop and what the program printed for it, and holds the printed schedule against the
# rules of the shop, on its own arithmetic.
#   awk -f check_schedule.awk INSTANCE OUTPUT

function fail(message) {
  print "check_schedule: " message
  failed = 1
}

BEGIN { read = printed = last = makespan = 0 }

NR == FNR {
  sub(/#.*/, "")
  sub(/\r/, "")
  if (NF == 0) next
  if (jobs == "") {
    jobs = $1
    machines = $2
  } else {
    for (k = 0; k < machines; ++k) {
      machine[read, k] = $(2 * k + 1)
      duration[read, k] = $(2 * k + 2)
    }
    ++read
  }
  next
}

$1 == "job" {
  ready = 0
  for (k = 0; k < machines; ++k) {
    split($(k + 4), part, /[:-]/)
    if (part[1] != machine[$2, k]) fail("job " $2 ": wrong machine in " $(k + 4))
    if (part[3] - part[2] != duration[$2, k]) fail("job " $2 ": wrong duration in " $(k + 4))
    if (part[2] + 0 < ready) fail("job " $2 " starts too early in " $(k + 4))
    ready = part[3] + 0
    begin[$2, k] = part[2] + 0
    end[$2, k] = part[3] + 0
    if (ready > last) last = ready
  }
  if (NF != machines + 3) fail("job " $2 " has " NF - 3 " operations")
  ++printed
}

$1 == "makespan" {
  makespan = $2 + 0
  if ($0 != "makespan " makespan ", energy " makespan ", violations 0 of " constraints() " constraints")
    fail("unexpected summary: " $0)
}

# One for each operation and what follows it, one for each two jobs on a machine.
function constraints() { return machines * jobs + machines * jobs * (jobs - 1) / 2 }

function overlap(a, b) { return begin[a] < end[b] && begin[b] < end[a] }

END {
  if (printed != jobs) fail(printed " of " jobs " jobs printed")
  if (last != makespan) fail("the last operation ends at " last ", not at " makespan)
  for (a in machine)
    for (b in machine)
      if (a != b && machine[a] == machine[b] && overlap(a, b)) fail("machine " machine[a] " is used twice")
  exit failed
}
