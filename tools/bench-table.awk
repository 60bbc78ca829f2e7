# Makes one table of Google Benchmark's JSON reports, any number of them one after the other: a line for each benchmark
# with its time, what it went through in a second, and then its label and whatever else it counted. Fails if one of them
# went wrong; one that was left out, as it says itself, did not.

function text_of(line) {
    sub(/^[^:]*: */, "", line)
    sub(/,$/, "", line)
    if (line ~ /^"/) {
        line = substr(line, 2, length(line) - 2)
        gsub(/\\"/, "\"", line)
        gsub(/\\\\/, "\\", line)
    }
    return line
}

function scaled(number, step, units,    names, last, unit) {
    number += 0
    last = split(units, names, " ")
    for (unit = 1; unit < last && number >= step; unit++)
        number /= step
    return sprintf(number < 10 ? "%.2f %s" : number < 100 ? "%.1f %s" : "%.0f %s", number, names[unit])
}

function nanoseconds(number, unit) {
    return number * (unit == "s" ? 1e9 : unit == "ms" ? 1e6 : unit == "us" ? 1e3 : 1)
}

function finish_row(    rate, notes, key) {
    if ("bytes_per_second" in field)
        rate = scaled(field["bytes_per_second"] / 1e6, 1000, "MB/s GB/s")
    else if ("items_per_second" in field)
        rate = scaled(field["items_per_second"], 1000, "/s k/s M/s G/s")
    notes = field["error_message"] != "" ? field["error_message"] : field["label"]
    for (key = 1; key <= counters; key++)
        notes = notes (notes == "" ? "" : "; ") counter[key] " " sprintf("%.4g", field[counter[key]])
    rows++
    if (field["error_message"] != "" && field["error_message"] !~ /^left out/)
        failed = 1
    cell[rows, 1] = field["name"]
    cell[rows, 2] = field["error_message"] != "" ? "" \
        : scaled(nanoseconds(field["real_time"], field["time_unit"]), 1000, "ns us ms s")
    cell[rows, 3] = rate
    cell[rows, 4] = notes
}

function print_row(row, column) {
    printf "%-*s  %*s  %*s  %s\n", width[1], cell[row, 1], width[2], cell[row, 2], width[3], cell[row, 3], cell[row, 4]
}

BEGIN {
    split("name family_index per_family_instance_index run_name run_type repetitions repetition_index threads iterations " \
          "real_time cpu_time time_unit bytes_per_second items_per_second label error_occurred error_message " \
          "aggregate_name aggregate_unit", names, " ")
    for (number in names)
        known[names[number]] = 1
    split("Benchmark|Time|Rate|Notes", heads, "|")
    for (column = 1; column <= 4; column++)
        cell[0, column] = heads[column]
}

/^  "benchmarks": \[/ { inside = 1; next }
/^  \]/ { inside = 0 }
inside && /^    {/ { split("", field); split("", counter); counters = 0; next }
inside && /^    }/ { finish_row(); next }
inside {
    key = $0
    sub(/^ *"/, "", key)
    sub(/":.*/, "", key)
    field[key] = text_of($0)
    if (!(key in known))
        counter[++counters] = key
}

END {
    for (row = 0; row <= rows; row++)
        for (column = 1; column <= 3; column++)
            if (length(cell[row, column]) > width[column])
                width[column] = length(cell[row, column])
    for (row = 0; row <= rows; row++)
        print_row(row)
    exit failed
}
