"""Reads what the benchmarks and probes of one run have written."""

import json
import statistics
from pathlib import Path

PROGRAMS = ("callBench", "callBenchPackaged", "fileBench", "asyncBench")


class Measurements:
    """One run: times by benchmark, probes, and what is known about the machine.

    A time is named by row and library, such as "kernel/spdlog_mt". Those of callBenchPackaged have
    "packaged/" before that, because they were measured in another process.
    """

    def __init__(self, directory):
        self._times = {}
        self.machine = self._read_machine(directory / "machine.txt")
        self.bytes_per_line = {}
        for program in PROGRAMS:
            self._read_times(directory / f"{program}.json",
                             "packaged/" if program.endswith("Packaged") else "")
        self._probes = self._read_lines(directory / "probes.jsonl")
        self._instructions = {
            line["operation"]: line["instructions"] / line["times"]
            for line in self._read_lines(directory / "instructions.jsonl")}

    @staticmethod
    def _read_machine(path):
        return dict(line.split(": ", 1) for line in path.read_text().splitlines())

    @staticmethod
    def _read_lines(path):
        if not path.exists():
            return []
        return [json.loads(line) for line in path.read_text().splitlines()]

    def _read_times(self, path, prefix):
        content = json.loads(path.read_text())
        for key in ("compiler", "flags", "LOG4ZEB", "spdlog", "glog", "Boost.Log",
                    "Google Benchmark"):
            self.machine[key] = content["context"][key]
        for run in content["benchmarks"]:
            if run.get("error_occurred"):
                raise SystemExit(f"{run['name']} failed: {run['error_message']}")
            if run["run_type"] != "iteration":
                continue
            if run["time_unit"] != "ns":
                raise SystemExit(f"{run['name']} is not in nanoseconds")
            name = prefix + "/".join(run["run_name"].split("/")[:2])
            self._times.setdefault(name, []).append(run["real_time"])
            if "bytes_per_line" in run:
                self.bytes_per_line[name] = int(run["bytes_per_line"])

    def names(self):
        return list(self._times)

    def median(self, name):
        """Nanoseconds."""
        return statistics.median(self._times[name])

    def quartiles(self, name):
        """The lower and the upper quartile, in nanoseconds."""
        times = self._times[name]
        if len(times) < 2:
            return times[0], times[0]
        lower, _, upper = statistics.quantiles(times, n=4, method="inclusive")
        return lower, upper

    def repetitions(self, name):
        return len(self._times[name])

    def probe(self, figure, **wanted):
        """The median of a figure over the probes that have these values."""
        return statistics.median(
            probe[figure] for probe in self._probes
            if all(probe.get(key) == value for key, value in wanted.items()))

    def has_instructions(self):
        return bool(self._instructions)

    def instructions(self, operation):
        """Of one call, without what calling it from a loop takes; None when not counted."""
        if operation not in self._instructions:
            return None
        return self._instructions[operation] - self._instructions["nothing"]


def read(directory):
    return Measurements(Path(directory))
