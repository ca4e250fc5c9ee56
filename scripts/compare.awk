# Makes a table of the results of two builds, of which each line begins with "before" or "after": medians, the ratio of the
# medians, and the lowest and highest ratio of one round. Benches that count real time are compared by it, others by the
# time of the processor.

# The value of a field of JSON without quotation marks and comma.
function value() {
    gsub(/[",]/, "", $3)
    return $3
}

$2 == "\"name\":" { name = value() }
$2 == "\"real_time\":" { realTime = value() }
$2 == "\"cpu_time\":" { cpuTime = value() }
$2 == "\"time_unit\":" {
    time = (name ~ /(real|manual)_time$/ ? realTime : cpuTime) * nanoseconds(value())
    if (time <= 0) next
    if (!(name in seen)) names[++nameCount] = name
    seen[name] = 1
    times[$1, name, ++count[$1, name]] = time
}

function nanoseconds(unit) {
    return unit == "ns" ? 1 : unit == "us" ? 1e3 : unit == "ms" ? 1e6 : 1e9
}

function median(who, name, size, i, j, sorted, time) {
    size = count[who, name]
    for (i = 1; i <= size; ++i) {
        time = times[who, name, i]
        for (j = i - 1; j > 0 && sorted[j] > time; --j)
            sorted[j + 1] = sorted[j]
        sorted[j + 1] = time
    }
    return size % 2 ? sorted[(size + 1) / 2] : (sorted[size / 2] + sorted[size / 2 + 1]) / 2
}

function inWords(time) {
    if (time < 1e4) return sprintf("%.1f ns", time)
    if (time < 1e7) return sprintf("%.1f us", time / 1e3)
    return sprintf("%.1f ms", time / 1e6)
}

END {
    printf "%-60s %12s %12s %7s %15s\n", "", "before", "after", "ratio", "of one round"
    for (i = 1; i <= nameCount; ++i) {
        name = names[i]
        rounds = count["before", name]
        if (rounds == 0 || rounds != count["after", name]) continue
        lowest = highest = times["after", name, 1] / times["before", name, 1]
        for (round = 2; round <= rounds; ++round) {
            ratio = times["after", name, round] / times["before", name, round]
            if (ratio < lowest) lowest = ratio
            if (ratio > highest) highest = ratio
        }
        before = median("before", name)
        after = median("after", name)
        isSlower = after > 1.25 * before
        slower += isSlower
        printf "%-60s %12s %12s %7.2f %6.2f to %5.2f%s\n", name, inWords(before), inWords(after), after / before, lowest, highest,
            isSlower ? "  slower" : ""
    }
    if (slower) printf "Warning: %d of these take more than 1.25 times as long as before.\n", slower
}
