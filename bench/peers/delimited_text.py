#!/usr/bin/env python3
"""Reads records like those of the row "DelimitedText" with Python's csv module into objects with
three attributes, and prints the best of five times. To be set beside the reference's time, which
qzbench --benchmark_filter=DelimitedText prints."""

import csv
import io
import random
import time


class Record:
    def __init__(self, name, version, section):
        self.name = name
        self.version = version
        self.section = section


def record_text(length=20_000_000):
    random.seed(3)
    letters = "abcdefghijklmnopqrstuvwxyz"
    names = ["".join(random.choices(letters, k=random.randint(6, 20))) for _ in range(10_000)]
    sections = ["libs", "libdevel", "admin", "utils", "oldlibs"]
    lines = []
    size = 0
    while size < length:
        i = len(lines)
        line = f"{names[i % 10_000]}\t{i % 10}.{i % 97}-{i % 7}\t{sections[i % 5]}\t\n"
        lines.append(line)
        size += len(line)
    return "".join(lines)


def main():
    text = record_text()
    best = float("inf")
    for _ in range(5):
        start = time.perf_counter()
        rows = csv.reader(io.StringIO(text), delimiter="\t", quoting=csv.QUOTE_NONE)
        records = [Record(row[0], row[1], row[2]) for row in rows]
        best = min(best, time.perf_counter() - start)
        del records
    print(f"{best * 1000:.0f} ms")


if __name__ == "__main__":
    main()
