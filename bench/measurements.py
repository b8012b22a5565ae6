"""Reads what the benchmarks and probes of one run have written."""

import json
import statistics
from pathlib import Path

BEFORE = "_before"
PROGRAMS = ("callBench", "callBenchPackaged", "fileBench", "asyncBench")


class Measurements:
    """One run: times by benchmark, probes, and what is known about the machine.

    A time is named by row and library, such as "kernel/spdlog_mt". Those of callBenchPackaged have
    "packaged/" before that, because they were measured in another process; those of an earlier
    revision have "_before" behind it.
    """

    def __init__(self, directory):
        self._times = {}
        self.machine = self._read_machine(directory / "machine.txt")
        self.bytes_per_line = {}
        for program in PROGRAMS:
            prefix = "packaged/" if program.endswith("Packaged") else ""
            for path in sorted(directory.glob(f"{program}.after.*.json")):
                self._read_times(path, prefix, "")
            for path in sorted(directory.glob(f"{program}.before.*.json")):
                self._read_times(path, prefix, BEFORE)
        self.paced = self._read_paced(directory / "paced.json")
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

    def _read_paced(self, path):
        """What is known about the rounds; the times of their blocks go to the others."""
        if not path.exists():
            return None
        paced = json.loads(path.read_text())
        for done in paced["rounds"]:
            for library, block in done["blocks"].items():
                for figure in ("median", "percentile_99"):
                    self._times.setdefault(f"paced_{figure}/{library}", []).append(block[figure])
        return paced

    def _read_times(self, path, prefix, suffix):
        content = json.loads(path.read_text())
        for key in ("compiler", "flags", "LOG4ZEB", "spdlog", "glog", "Boost.Log", "quill",
                    "Google Benchmark"):
            if not suffix and key in content["context"]:
                self.machine[key] = content["context"][key]
        for run in content["benchmarks"]:
            if run.get("error_occurred"):
                raise SystemExit(f"{run['name']} failed: {run['error_message']}")
            if run["run_type"] != "iteration":
                continue
            if run["time_unit"] != "ns":
                raise SystemExit(f"{run['name']} is not in nanoseconds")
            name = prefix + "/".join(run["run_name"].split("/")[:2]) + suffix
            self._times.setdefault(name, []).append(run["real_time"])
            if "bytes_per_line" in run:
                self.bytes_per_line[name] = int(run["bytes_per_line"])

    def names(self):
        return list(self._times)

    def has(self, name):
        return name in self._times

    def median(self, name):
        """Nanoseconds."""
        return statistics.median(self._times[name])

    def quartiles(self, name):
        """The lower and the upper quartile, in nanoseconds."""
        return middle_half(self._times[name])

    def paired_ratios(self, name, peer):
        """Of the blocks of each round; only for paced events."""
        return [time / beside for time, beside in zip(self._times[name], self._times[peer])
                if beside > 0]

    def repetitions(self, name):
        return len(self._times[name])

    def probe(self, figure, **wanted):
        """The median of a figure over the probes that have these values; None without any."""
        values = [probe[figure] for probe in self._probes
                  if all(probe.get(key) == value for key, value in wanted.items())]
        return statistics.median(values) if values else None

    def has_instructions(self):
        return bool(self._instructions)

    def instructions(self, operation):
        """Of one call, without what calling it from a loop takes; None when not counted."""
        if operation not in self._instructions:
            return None
        return self._instructions[operation] - self._instructions["nothing"]


def middle_half(values):
    if len(values) < 2:
        return values[0], values[0]
    lower, _, upper = statistics.quantiles(values, n=4, method="inclusive")
    return lower, upper


def read(directory):
    return Measurements(Path(directory))
