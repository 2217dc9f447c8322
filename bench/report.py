"""Results as a table of text and as JSON."""

import dataclasses
import datetime
import json
import os
import platform
import statistics
import subprocess


@dataclasses.dataclass
class Result:
    """Seconds of each run of both sides, and the peak memory of ours."""

    case: object
    points: int
    ours: list
    peer: list
    peak_kib: int | None
    baseline_kib: int

    def summary(self):
        ours, peer = statistics.median(self.ours), statistics.median(self.peer)
        arrays = self.case.array_bytes * self.points / 1024
        known = self.peak_kib is not None
        # Warm memory includes what was allocated before.
        beyond = known and self.case.memory != "warm"
        return {
            "case": self.case.name,
            "peer": self.case.peer,
            "points": self.points,
            "ours_median_s": ours,
            "peer_median_s": peer,
            "ratio": peer / ours,
            "ns_per_value": 1e9 * ours / (self.points * self.case.values),
            "peak_mib": self.peak_kib / 1024 if known else None,
            "mib_beyond_arrays": (self.peak_kib - self.baseline_kib - arrays) / 1024
                                 if beyond else None,
            "ours_s": self.ours,
            "peer_s": self.peer,
        }


HEADING = (f"{'case':<55}{'points':>10}{'ours s':>10}{'peer s':>10}{'ratio':>8}{'ns/value':>10}"
           f"{'peak MiB':>10}{'+MiB':>8}")
EXPLANATION = """\
Medians. ratio: peer over ours. ns/value: ours. +MiB: peak memory of ours beyond that of a process
that does nothing and the arrays of the operation; not for warm memory."""


def mib(amount):
    return "-" if amount is None else f"{amount:.1f}"


def line(summary):
    return (f"{summary['case']:<55}{summary['points']:>10}{summary['ours_median_s']:>10.4f}"
            f"{summary['peer_median_s']:>10.4f}{summary['ratio']:>8.2f}"
            f"{summary['ns_per_value']:>10.2f}{mib(summary['peak_mib']):>10}"
            f"{mib(summary['mib_beyond_arrays']):>8}")


def first_line(command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.split("\n")[0]


def processor():
    with open("/proc/cpuinfo", encoding="utf-8") as file:
        names = [text.split(":", 1)[1].strip() for text in file if text.startswith("model name")]
    return names[0] if names else platform.machine()


def machine():
    return {
        "time": datetime.datetime.now().astimezone().isoformat(timespec="seconds"),
        "processor": processor(),
        "processors": os.cpu_count(),
        "kernel": platform.release(),
        "libc": " ".join(platform.libc_ver()),
        "gfortran": first_line(["gfortran", "--version"]),
    }


def write_json(path, repetitions, summaries):
    path.write_text(json.dumps(
        {"machine": machine(), "repetitions": repetitions, "results": summaries}, indent=1) + "\n",
        encoding="utf-8")
