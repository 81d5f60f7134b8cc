# Reads what Node's test runner prints and prints "passed failed skipped". A log may hold the
# closing totals of several runs.

{ gsub(/\033\[[0-9;]*m/, "") }
NF == 3 && ($1 == "#" || $1 == "ℹ") { total[$2] += $3 }
END { print total["pass"] + 0, total["fail"] + total["cancelled"], total["skipped"] + total["todo"] }
