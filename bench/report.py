#!/usr/bin/env python3
"""Makes results.md and results.svg of what one run has measured.

    report.py MEASUREMENTS OUTPUT, two directories
"""

import statistics
import sys
from pathlib import Path

import chart
import measurements

LIBRARIES = {
    "log4zeb": "LOG4ZEB",
    "log4zeb_method": "LOG4ZEB, method",
    "log4zeb_macro": "LOG4ZEB, macro",
    "log4zeb_literal": "LOG4ZEB, by literal",
    "log4zeb_buffered": "LOG4ZEB, buffered",
    "log4zeb_never_full": "LOG4ZEB, never full",
    "spdlog": "spdlog",
    "spdlog_mt": "spdlog",
    "spdlog_st": "spdlog, one thread",
    "spdlog_rotating": "spdlog, rotating",
    "spdlog_flushing": "spdlog, flushing",
    "quill": "quill",
    "boost_log": "Boost.Log",
    "glog": "glog",
    "bare_write": "bare write",
}

ROWS = {
    "disabled": "a request that is switched off",
    "packaged/disabled": "a request that is switched off, spdlog as packaged",
    "lookup_shuffled": "look-up, 1,000 names in turn",
    "lookup_same": "look-up, one name of 1,000",
    "packaged/lookup_shuffled": "look-up, 1,000 names in turn, spdlog as packaged",
    "packaged/lookup_same": "look-up, one name of 1,000, spdlog as packaged",
    "kernel": "in the kernel when the call returns",
    "buffered": "buffered",
    "kernel_4_threads": "in the kernel, 4 threads",
    "buffered_4_threads": "buffered, 4 threads",
    "rolling": "in the kernel, rolling over every 1 MiB",
    "async_caller": "asynchronous, the caller",
    "async_caller_formatted": "asynchronous, the caller, formatted with a number",
    "paced_median": "asynchronous, an event every 20 µs, median",
    "paced_percentile_99": "asynchronous, an event every 20 µs, 99th percentile",
    "async_whole": "asynchronous, a million events",
    "async_whole_4_threads": "asynchronous, a million events, 4 threads",
}

# What is compared: a time, the time it is compared with, and the greatest ratio wanted.
TARGETS = (
    ("packaged/disabled/log4zeb_method", "packaged/disabled/spdlog", 1.0),
    ("packaged/disabled/log4zeb_macro", "packaged/disabled/spdlog", 1.0),
    ("kernel/log4zeb", "kernel/spdlog_mt", 0.85),
    ("kernel/log4zeb", "kernel/bare_write", 1.2),
    ("buffered/log4zeb", "buffered/spdlog_mt", 0.9),
    ("kernel_4_threads/log4zeb", "kernel_4_threads/spdlog_mt", 1.0),
    ("buffered_4_threads/log4zeb", "buffered_4_threads/spdlog_mt", 1.0),
    ("async_caller/log4zeb", "async_caller/spdlog", 0.3),
    ("async_whole/log4zeb", "async_whole/spdlog", 0.6),
    ("lookup_shuffled/log4zeb", "lookup_shuffled/spdlog", 1.0),
    ("lookup_same/log4zeb", "lookup_same/spdlog", 1.0),
    ("rolling/log4zeb", "kernel/log4zeb", 1.1),
)

# Compared without a target.
COMPARED = (
    ("disabled/log4zeb_method", "disabled/spdlog"),
    ("disabled/log4zeb_macro", "disabled/spdlog"),
    ("kernel/log4zeb", "kernel/spdlog_st"),
    ("buffered/log4zeb", "buffered/spdlog_st"),
    ("async_caller/log4zeb_buffered", "async_caller/spdlog"),
    ("async_whole/log4zeb_buffered", "async_whole/spdlog"),
    ("async_caller/log4zeb", "async_caller/quill"),
    ("async_caller_formatted/log4zeb", "async_caller_formatted/spdlog"),
    ("async_caller_formatted/log4zeb", "async_caller_formatted/quill"),
    ("paced_median/log4zeb", "paced_median/spdlog"),
    ("paced_median/log4zeb", "paced_median/quill"),
    ("paced_percentile_99/log4zeb", "paced_percentile_99/spdlog"),
    ("paced_percentile_99/log4zeb", "paced_percentile_99/quill"),
    ("async_whole/log4zeb", "async_whole/quill"),
    ("async_whole_4_threads/log4zeb", "async_whole_4_threads/spdlog"),
    ("async_whole_4_threads/log4zeb", "async_whole_4_threads/quill"),
    ("rolling/log4zeb", "rolling/log4zeb_never_full"),
    ("rolling/log4zeb", "rolling/spdlog_rotating"),
)

MOST_ALLOCATIONS = {"kernel": 2, "buffered": 2, "async": 4}
# How much a document's reading may grow beyond the growth of the document.
MOST_GROWTH = 1.2

PANELS = ("kernel", "buffered", "kernel_4_threads", "buffered_4_threads", "async_caller",
          "async_caller_formatted", "async_whole", "async_whole_4_threads", "packaged/disabled",
          "lookup_shuffled")

OPERATIONS = (
    ("a request that is switched off", "disabled_{}"),
    ("the same by the macro", "disabled_{}_macro"),
    ("look-up", "lookup_{}"),
    ("look-up by literal", "lookup_{}_literal"),
    ("in the kernel when the call returns", "{}_kernel"),
    ("buffered", "{}_buffered"),
    ("asynchronous, the caller", "{}_async"),
    ("asynchronous, the caller, formatted with a number", "{}_async_formatted"),
)


class Figure:
    """A line of the table of figures: `value` gives what was measured of the revision that a suffix
    names, or None, and `detail` what is told with it. Less is better. One that needs quiet is not
    judged by blocks beside other load."""

    def __init__(self, row, value, must, goal, detail=lambda measured, suffix: "",
                 needs_quiet=False):
        self.row, self.value, self.must, self.goal = row, value, must, goal
        self.detail, self.needs_quiet = detail, needs_quiet


def ratio_figure(row, work, peer, must, goal):
    """Of two medians."""
    def value(measured, suffix):
        names = f"{work}/log4zeb{suffix}", f"{work}/{peer}"
        if not all(map(measured.has, names)):
            return None
        return measured.median(names[0]) / measured.median(names[1])

    def detail(measured, suffix):
        return (f" ({number(measured.median(f'{work}/log4zeb{suffix}'))} : "
                f"{number(measured.median(f'{work}/{peer}'))} ns)")
    return Figure(f"{row}, ratio to {LIBRARIES[peer]}", value, must, goal, detail)


def paced_figure(row, work, peer, must, goal):
    """The median of the ratios of blocks that were measured right after each other."""
    def all_ratios(measured, suffix):
        names = f"{work}/log4zeb{suffix}", f"{work}/{peer}"
        return measured.paired_ratios(*names) if all(map(measured.has, names)) else []

    def value(measured, suffix):
        found = all_ratios(measured, suffix)
        return statistics.median(found) if found else None

    def detail(measured, suffix):
        lower, upper = measurements.middle_half(all_ratios(measured, suffix))
        return (f" (middle half {number(lower)} to {number(upper)}; "
                f"{number(measured.median(f'{work}/log4zeb{suffix}'))} : "
                f"{number(measured.median(f'{work}/{peer}'))} ns)")
    return Figure(f"{row}, ratio to {LIBRARIES[peer]}", value, must, goal, detail,
                  needs_quiet=True)


def instruction_figure(row, operation, must, goal):
    return Figure(row, lambda measured, suffix: measured.instructions(
        f"log4zeb{suffix}_{operation}"), must, goal)


def call_figure(row, what, must, goal):
    def value(measured, suffix):
        wanted = {"probe": "calls", "tree": "before" if suffix else "after"}
        count = measured.probe(what, **wanted)
        return None if count is None else count / measured.probe("times", **wanted)
    return Figure(row, value, must, goal)


FIGURES = (
    Figure("lines of library and tools", lambda measured, suffix: measured.probe(
        "lines", probe="lines", tree="before" if suffix else "after"), None, None),
    call_figure("calls of an event to a file", "calls", 40, 30),
    call_figure("the same, virtual calls", "indirect_calls", 8, 6),
    call_figure("the same, locked instructions, two to a lock", "locked", None, None),
    instruction_figure("instructions, buffered", "buffered", 1450, 1200),
    instruction_figure("instructions, in the kernel", "kernel", 1400, 1150),
    instruction_figure("instructions, asynchronous caller", "async", 850, 700),
    instruction_figure("instructions, asynchronous caller, formatted", "async_formatted", None,
                       None),
    ratio_figure("buffered", "buffered", "spdlog_mt", 0.8, 0.6),
    ratio_figure("buffered, 4 threads", "buffered_4_threads", "spdlog_mt", 0.9, 0.7),
    ratio_figure("in the kernel", "kernel", "spdlog_mt", 0.95, 0.9),
    ratio_figure("in the kernel, 4 threads", "kernel_4_threads", "spdlog_mt", 0.9, 0.8),
    ratio_figure("asynchronous caller, burst, plain text", "async_caller", "quill", 6, 4),
    ratio_figure("asynchronous caller, burst, formatted with one number",
                 "async_caller_formatted", "quill", 9, 6),
    paced_figure("asynchronous caller, an event every 20 µs, median", "paced_median", "quill",
                 5, 3),
    paced_figure("asynchronous caller, an event every 20 µs, 99th percentile",
                 "paced_percentile_99", "quill", 5, 3),
    Figure("futex calls of that caller in 30,000 events",
           lambda measured, suffix: measured.probe("calls", probe="futex",
                                                   log=f"log4zeb{suffix}"), 0, 0),
    ratio_figure("asynchronous, whole", "async_whole", "quill", 1.0, 0.8),
    ratio_figure("asynchronous, whole, 4 threads", "async_whole_4_threads", "quill", 1.0, 0.8),
)


def split(name):
    row, _, library = name.rpartition("/")
    return row, library


def library_name(name):
    library = split(name)[1]
    if library.endswith(measurements.BEFORE):
        return LIBRARIES[library[:-len(measurements.BEFORE)]] + ", before"
    return LIBRARIES[library]


def number(value):
    if value == 0:
        return "0"
    return f"{value:,.0f}" if value >= 100 else f"{value:.1f}" if value >= 10 else f"{value:.2f}"


def table(header, alignment, lines):
    return ["| " + " | ".join(header) + " |", "|" + "|".join(alignment) + "|"] + [
        "| " + " | ".join(line) + " |" for line in lines] + [""]


def verdict(ratio, target):
    return "yes" if ratio <= target else "**no**"


def compared_with(name, peer):
    row, _ = split(peer)
    return library_name(peer) + ("" if row == split(name)[0] else f" ({ROWS[row]})")


def ratio_of(measured, name, peer):
    if name.startswith("paced_"):
        return statistics.median(measured.paired_ratios(name, peer))
    return measured.median(name) / measured.median(peer)


def comparison(measured, name, peer, target=None):
    ratio = ratio_of(measured, name, peer)
    wanted = ["", ""] if target is None else [f"≤ {target}", verdict(ratio, target)]
    return [ROWS[split(name)[0]], f"{library_name(name)}: {number(measured.median(name))}",
            f"{compared_with(name, peer)}: {number(measured.median(peer))}", f"{ratio:.2f}"] + wanted


def ratios(measured):
    return (["## Ratios", "",
             "Medians in nanoseconds per event, of the same run. The rows without a target are for "
             "information.", ""] +
            table(("work", "time", "beside", "ratio", "target", "met"),
                  ("---", "---", "---", "--:", "--:", "---"),
                  [comparison(measured, *line) for line in TARGETS + COMPARED
                   if measured.has(line[0]) and measured.has(line[1])]))


def reached(value, must, goal):
    if value is None or must is None:
        return ""
    return "goal" if value <= goal else "must" if value <= must else "**no**"


def figure_cell(measured, figure, suffix):
    value = figure.value(measured, suffix)
    if value is None:
        return ""
    text = f"{value:,.0f}" if value == int(value) else number(value)
    return text + figure.detail(measured, suffix)


def is_quiet(measured):
    paced = measured.paced
    return paced is not None and paced["quiet_rounds"] == len(paced["rounds"])


def met(measured, figure):
    if figure.needs_quiet and measured.paced is not None and not is_quiet(measured):
        return "too busy"
    return reached(figure.value(measured, ""), figure.must, figure.goal)


def figure_line(measured, figure):
    cells = [figure_cell(measured, figure, suffix) for suffix in (measurements.BEFORE, "")]
    wanted = ["" if limit is None else f"{limit:,}" for limit in (figure.must, figure.goal)]
    return [figure.row] + cells + wanted + [met(measured, figure)]


def paced_sentence(measured):
    if measured.paced is None:
        return "Paced events were not measured."
    quiet, void = measured.paced["quiet_rounds"], measured.paced["void_rounds"]
    used = measured.paced["rounds"]
    blocks = len(used[0]["blocks"])
    sentence = (f"Of paced events {len(used)} rounds of {blocks} blocks count; {void} rounds, "
                f"{void * blocks} blocks, were void because other programs took more than "
                f"{measured.paced['most_load']:.0%} of the processors.")
    if not is_quiet(measured):
        worst = max(done["foreign"] for done in used)
        sentence += (f" **Only {quiet} of the rounds that count were quiet**, the others are the "
                     f"least disturbed of those that were void, up to {worst:.0%}: the machine was "
                     "too busy for these figures.")
    return sentence


def figures(measured):
    known = measured.machine
    sentence = f"Measured on {known['processor']}, {known['date']}, revision {known['revision']}"
    sentence += f"; before is {known['before']}" if "before" in known else ""
    sentence += f"; quill {known['quill']}" if "quill" in known else ""
    return (["## Figures", "", sentence + ". Less is better; empty is not measured.", ""] +
            table(("row", "before", "after", "must", "goal", "met"),
                  ("---", "--:", "--:", "--:", "--:", "---"),
                  [figure_line(measured, line) for line in FIGURES]) +
            [paced_sentence(measured), ""])


def before_and_after(measured):
    pairs = [(name, name + measurements.BEFORE) for name in measured.names()
             if measured.has(name + measurements.BEFORE)]
    if not pairs:
        return []
    pairs.sort(key=lambda pair: list(ROWS).index(split(pair[0])[0]))
    return (["## Before and after", "",
             "Medians in nanoseconds per event, of the same run.", ""] +
            table(("work", "library", "before", "after", "ratio"), ("---", "---") + ("--:",) * 3,
                  [[ROWS[split(name)[0]], library_name(name), number(measured.median(before)),
                    number(measured.median(name)), f"{ratio_of(measured, name, before):.2f}"]
                   for name, before in pairs]))


def all_times(measured):
    lines = []
    for name in sorted(measured.names(), key=lambda name: (list(ROWS).index(split(name)[0]),
                                                           measured.median(name))):
        lower, upper = measured.quartiles(name)
        lines.append([ROWS[split(name)[0]], library_name(name), number(measured.median(name)),
                      f"{number(lower)} to {number(upper)}", str(measured.repetitions(name)),
                      str(measured.bytes_per_line.get(name, ""))])
    return (["## All times", "", "Nanoseconds per event.", ""] +
            table(("work", "library", "median", "middle half", "repetitions", "bytes a line"),
                  ("---", "---", "--:", "--:", "--:", "--:"), lines))


def setup_line(measured, loggers):
    wanted = {"probe": "setup", "loggers": loggers}
    seconds = measured.probe("seconds", **wanted)
    allocations = measured.probe("allocations", **wanted)
    return [f"{loggers:,}", f"{seconds * 1e3:.2f}", f"{seconds / loggers * 1e6:.2f}",
            f"{allocations:,.0f}", f"{allocations / loggers:.1f}",
            f"{measured.probe('bytes', **wanted) / 1e6:.1f}"]


def setup(measured):
    def growth(figure):
        return (measured.probe(figure, probe="setup", loggers=10000) /
                measured.probe(figure, probe="setup", loggers=1000) / 10)

    sentences = [
        f"From 1,000 to 10,000 loggers the {what} per logger grows by a factor of "
        f"{growth(figure):.2f}; at most {MOST_GROWTH} counts as linear: "
        f"{verdict(growth(figure), MOST_GROWTH)}."
        for what, figure in (("time", "seconds"), ("number of allocations", "allocations"))]
    return (["## Reading a document", "",
             "A document with so many loggers and 50 file appenders, read by a fresh process.", ""] +
            table(("loggers", "ms", "µs per logger", "allocations", "per logger", "MB allocated"),
                  ("--:",) * 6,
                  [setup_line(measured, loggers) for loggers in (100, 1000, 10000)]) +
            sentences + [""])


def logger_memory(measured, library):
    wanted = {"probe": "loggers", "library": library}
    count = measured.probe("loggers", **wanted)
    return [LIBRARIES[library], number(measured.probe("peak_bytes", **wanted) / count),
            f"{measured.probe('allocations', **wanted) / count:.1f}"]


def event_memory(measured, library, mode):
    wanted = {"probe": "events", "log": f"{library}_{mode}"}
    events = measured.probe("events", **wanted)
    allocations = measured.probe("allocations", **wanted) / events
    target = ["", ""]
    if library == "log4zeb":
        most = MOST_ALLOCATIONS[mode]
        target = [f"≤ {most}", verdict(allocations, most)]
    row = "asynchronous" if mode == "async" else ROWS[mode]
    return [row, LIBRARIES[library], number(allocations),
            number(measured.probe("bytes", **wanted) / events)] + target


def memory(measured):
    logs = [(library, mode) for mode in MOST_ALLOCATIONS for library in
            ("log4zeb", "spdlog", "quill", "boost_log", "glog")
            if measured.probe("events", probe="events", log=f"{library}_{mode}") is not None]
    return (["## Memory", "", "Of 100,000 loggers, made in a process of its own:", ""] +
            table(("library", "peak bytes per logger", "allocations per logger"),
                  ("---", "--:", "--:"),
                  [logger_memory(measured, library) for library in ("log4zeb", "spdlog")]) +
            ["Of one event in steady state, all threads counted:", ""] +
            table(("work", "library", "allocations", "bytes", "target", "met"),
                  ("---", "---", "--:", "--:", "--:", "---"),
                  [event_memory(measured, *log) for log in logs]))


def instruction_line(measured, what, pattern):
    def count(library):
        return measured.instructions(pattern.format(library))

    counts = [count("log4zeb_before"),
              count("log4zeb") if pattern != "disabled_{}" else measured.instructions(
                  "disabled_log4zeb_method")]
    counts += [count(library) for library in ("spdlog", "quill", "boost_log", "glog")]
    counts.append(measured.instructions("bare_write") if pattern == "{}_kernel" else None)
    return [what] + ["" if value is None else f"{value:,.0f}" for value in counts]


def instructions(measured):
    if not measured.has_instructions():
        return []
    lines = [instruction_line(measured, *line) for line in OPERATIONS]
    return (["## Instructions", "",
             "Of one call on the thread that makes it, outside the kernel. They do not depend on "
             "what else the machine does.", ""] +
            table(("work", "LOG4ZEB, before", "LOG4ZEB", "spdlog", "quill", "Boost.Log", "glog",
                   "bare write"), ("---",) + ("--:",) * 7,
                  [line for line in lines if any(line[1:])]))


def machine(measured):
    return (["## Measured with", ""] +
            table(("", ""), ("---", "---"), [list(item) for item in measured.machine.items()]))


def markdown(measured):
    lines = ["# Measured beside its peers", "",
             "`scripts/bench.sh` wrote this; [`README.md`](README.md) tells how each row is "
             "measured.", "", "![times per event](results.svg)", ""]
    for part in (figures, ratios, before_and_after, all_times, setup, memory, instructions, machine):
        lines += part(measured)
    return "\n".join(lines)


def panel(measured, row):
    bars = [(library_name(name), measured.median(name), split(name)[1].startswith("log4zeb"))
            for name in measured.names()
            if split(name)[0] == row and not name.endswith(measurements.BEFORE)]
    return ROWS[row][0].upper() + ROWS[row][1:], sorted(bars, key=lambda bar: bar[1])


def main():
    if len(sys.argv) != 3:
        raise SystemExit("usage: report.py MEASUREMENTS OUTPUT")
    measured = measurements.read(sys.argv[1])
    output = Path(sys.argv[2])
    (output / "results.md").write_text(markdown(measured), encoding="utf-8")
    subtitle = (f"medians of one run, {measured.machine['date']}, "
                f"{measured.machine['processor']}; each panel has its own scale")
    (output / "results.svg").write_text(
        chart.draw([panel(measured, row) for row in PANELS], subtitle), encoding="utf-8")


if __name__ == "__main__":
    main()
