# Makes the table of what commands.sh has measured: lines of size, command, side, microseconds, kilobytes.

function quantile(list, count, part,    i, j, key, place) {
  for (i = 2; i <= count; ++i) {
    key = list[i]
    for (j = i - 1; j > 0 && list[j] > key; --j) list[j + 1] = list[j]
    list[j + 1] = key
  }
  place = 1 + part * (count - 1)
  i = int(place)
  return list[i] + (i < count ? (list[i + 1] - list[i]) * (place - i) : 0)
}

# seconds(SIZE, COMMAND, SIDE): the median.
function seconds(size, command, side,    list, i) {
  for (i = 1; i <= runs[size, command, side]; ++i) list[i] = time[size, command, side, i]
  return quantile(list, i - 1, 0.5)
}

# ratio(SIZE, COMMAND): the median of the ratios of all rounds, with the quartiles.
function ratio(size, command,    list, i, n) {
  n = runs[size, command, "library"]
  for (i = 1; i <= n; ++i) list[i] = time[size, command, "library", i] / time[size, command, "beside", i]
  return sprintf("%.2f (%.2f–%.2f)", quantile(list, n, 0.5), quantile(list, n, 0.25), quantile(list, n, 0.75))
}

function growth(command, side,    first) {
  first = seconds(200, command, side)
  return sprintf("%.2f, %.2f", seconds(2000, command, side) / first / 10, seconds(20000, command, side) / first / 100)
}

function memory(command, side) {
  return sprintf("%.1f, %.1f, %.1f MB", peak[200, command, side] / 1024, peak[2000, command, side] / 1024,
    peak[20000, command, side] / 1024)
}

function row(command, name, beside, goal) {
  printf "| %s | %s | 20000 files | %.0f ms | %.0f ms | %s | ≤ %.2f | %s, %s | %s | %s | %s |\n", name, beside,
    seconds(20000, command, "library") * 1000, seconds(20000, command, "beside") * 1000, ratio(20000, command),
    goal, ratio(200, command), ratio(2000, command), memory(command, "library"),
    growth(command, "library"), growth(command, "beside")
}

{
  time[$1, $2, $3, ++runs[$1, $2, $3]] = $4 / 1e6
  if ($5 > peak[$1, $2, $3]) peak[$1, $2, $3] = $5
}

END {
  print "| Command | Beside | Size | Time | Beside it | Ratio | Goal | Ratio at 1×, 10× | Peak memory at 1×, 10×, 100× | Growth | Growth beside it |"
  print "| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |"
  row("install", "`kwbatch install`", "`tar -xf`, `cksum`, `sync`", 1.10)
  row("verify", "`kwbatch verify`", "`cksum`", 1.05)
  row("uninstall", "`kwbatch uninstall`", "`rm -rf`", 1.20)
  row("medium", "`kwmedium product`", "`tar`, `compress`, `sha256sum`", 1.10)
}
