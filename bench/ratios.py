#!/usr/bin/env python3
"""Compares runs of kreiluge_bench with the recorded ones.

    ratios.py check RATIOS RUN...          lists what has become slow or missed its aim; exit status 1 then
    ratios.py record RATIOS RUN... > DOC   writes the runs to RATIOS, keeping the aims, and prints them as Markdown

RATIOS has a line for each contender of a row at each instruction set: how many times faster we are (of the
copy: 1 / 3 where we take three times as long), what to reach at least or -, and the name. A RUN is SET=FILE,
the JSON of Google Benchmark at an instruction set.
"""
import json
import sys

SLOWER = 0.8  # of the recorded ratio: not a matter of noise


def ratios_of(run):
    """The ratios of the minima by (set, name), and what failed."""
    level, file = run.split("=", 1)
    least, failed = {}, []
    with open(file, encoding="utf-8") as text:
        for result in sorted(json.load(text)["benchmarks"], key=lambda entry: entry["family_index"]):
            name = result["run_name"].removesuffix("/real_time").removesuffix("/process_time")
            if result.get("error_occurred"):
                failed.append(f"{level}: {name} {result['error_message']}")
            elif result["run_type"] == "iteration":
                time = 1.0 / result["items_per_second"]
                least[name] = min(least.get(name, time), time)
    ratios = {}
    for name, time in least.items():
        row, _, contender = split(name)
        ours = least.get(f"{row}/ours")
        if ours and contender != "ours":
            ratios[level, name] = time / ours
    return ratios, failed


def split(name):
    operation, kind, size, contender = name.split("/", 3)
    return f"{operation}/{kind}/{size}", size, contender


def read(file):
    """The recorded ratios and the aims, by (set, name)."""
    ratios, aims = {}, {}
    with open(file, encoding="utf-8") as lines:
        for line in lines:
            if line.strip() and not line.startswith("#"):
                level, ratio, aim, name = line.rstrip("\n").split(maxsplit=3)
                ratios[level, name] = float(ratio)
                if aim != "-":
                    aims[level, name] = float(aim)
    return ratios, aims


def check(file, measured):
    recorded, aims = read(file)
    short = 0
    for key, ratio in measured.items():
        aim = aims.get(key, 0.0)
        slow = ratio < SLOWER * recorded.get(key, 0.0)
        if ratio < aim or slow:
            short += 1
            was = f"recorded {recorded.get(key, 0.0):.2f}" + (f", aim {aim:.2f}" if aim else "")
            print(f"{key[0]:8} {ratio:7.2f}  {key[1]}: {was}{', SLOWER' if slow else ''}")
    print(f"{short} of {len(measured)} ratios fall short")
    return short


def record(file, measured):
    recorded, aims = read(file)
    recorded.update(measured)
    with open(file, encoding="utf-8") as lines:
        head = [line for line in lines if line.startswith("#")]
    with open(file, "w", encoding="utf-8") as out:
        out.writelines(head)
        for (level, name), ratio in recorded.items():
            aim = aims.get((level, name))
            digits = 4 if ratio < 0.1 else 2  # little is left of a copy beside slow work
            out.write(f"{level:8} {ratio:8.{digits}f} {'-' if aim is None else format(aim, '.2f'):>5} {name}\n")
    markdown(recorded)


def markdown(ratios):
    levels = list(dict.fromkeys(level for level, _ in ratios))
    rows = {}
    for level, name in ratios:
        row, _, contender = split(name)
        rows.setdefault(row, {}).setdefault(contender, {})[level] = ratios[level, name]
    print("| row | " + " | ".join(f"x copy, {level}" for level in levels) + " | peers, " + "; ".join(levels) + " |")
    print("| --- |" + " ---: |" * len(levels) + " --- |")
    for row, contenders in rows.items():
        copy = contenders.pop("copy", {})
        cells = [f"{1 / copy[level]:.1f}" if copy.get(level) else "" for level in levels]
        peers = [f"{name} " + "; ".join(f"{at[level]:.1f}" if level in at else "-" for level in levels)
                 for name, at in contenders.items()]
        print(f"| {row} | " + " | ".join(cells) + " | " + ". ".join(peers) + " |")


def main():
    action, file, *runs = sys.argv[1:]
    measured, failed = {}, []
    for run in runs:
        ratios, errors = ratios_of(run)
        measured.update(ratios)
        failed += errors
    print(*failed, sep="\n", file=sys.stderr, end="\n" if failed else "")
    if action == "record":
        record(file, measured)
        return 1 if failed else 0
    return 1 if check(file, measured) or failed else 0


if __name__ == "__main__":
    sys.exit(main())
