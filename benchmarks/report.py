#!/usr/bin/env python3
"""Makes tables and charts of what measure prints.

report.py console            lines for people, from standard input, as the cases come in
report.py page RESULTS DIR   DIR/performance.md and its charts
report.py readme RESULTS     ten rows in Markdown
"""
import json
import math
import os
import statistics
import subprocess
import sys

RIVALS = ["libc memmem", "StringZilla", "memchr crate"]


def size_text(size):
    for unit, name in ((1 << 20, "MiB"), (1 << 10, "KiB")):
        if size >= unit and size % unit == 0:
            return f"{size // unit} {name}"
    return f"{size} B"


def digits(value):
    """Three significant digits, without an exponent."""
    if value == 0:
        return "0"
    return f"{value:.{max(0, 2 - math.floor(math.log10(abs(value))))}f}"


class Goal:
    """A goal beside its figure; `met` is None where this machine cannot tell."""

    def __init__(self, text, figure=None, met=None):
        self.text, self.figure, self.met = text, figure, met

    def __str__(self):
        if self.met is None:
            return f"{self.text}: not measured here"
        return f"{self.text}: {self.figure}, {'met' if self.met else '**not met**'}"


class Case:
    def __init__(self, line):
        self.__dict__.update(line)
        self.bundle = self.contenders[0]
        self.title = self.member + (f", {self.variant}" if self.variant else "")
        self.place = size_text(self.size) + (" + 1" if self.misaligned else "")

    def of_kind(self, *kinds):
        return [c for c in self.contenders[1:] if c["kind"] in kinds]

    def fastest(self, contenders):
        return min(contenders, key=lambda c: c["ns"], default=None)

    @property
    def best_peer(self):
        peers = self.of_kind("peer")
        return self.fastest([p for p in peers if p["same_result"]] or peers)

    @property
    def limit(self):
        return self.fastest(self.of_kind("limit"))

    def speed(self, contender):
        return self.bytes / contender["ns"]  # 10^9 bytes per second

    @property
    def figure(self):
        if self.size <= 256:
            return f"{digits(self.bundle['ns'] * self.size / self.bytes)} ns"
        return f"{digits(self.speed(self.bundle))} GB/s"

    def goal_results(self):
        return [self.judge(goal) for goal in self.goals]

    def judge(self, goal):
        if goal["instructions"]:
            counted, most = self.bundle["instructions"], goal["instructions"]
            return Goal(f"at most {most} instructions", counted, counted <= most if counted else None)
        if goal["gigabytes"]:
            speed = self.speed(self.bundle)
            return Goal(f"at least {goal['gigabytes']} GB/s", digits(speed), speed >= goal["gigabytes"])
        named = self.fastest([c for c in self.contenders if c["name"] in goal["of"]])
        who = next((c for c in self.contenders if c["name"] == goal["who"]), None)
        least = f"{round(goal['least'], 2):g}"
        if not named or not who:
            return Goal(f"{least} of {goal['of'][0].split(',')[0]}")
        figure = round(named["ratio"] / who["ratio"], 2)
        subject = "" if goal["who"] == "bundle" else f"{goal['who']} "
        return Goal(f"{subject}{least} of {named['name'].split(',')[0]}", f"{figure:.2f}",
                    figure >= round(goal["least"], 2))


def read(lines):
    header, cases = {}, []
    for line in lines:
        entry = json.loads(line)
        if "contenders" in entry:
            cases.append(Case(entry))
        else:
            header = entry
    return header, cases


def console():
    """A figure behind a name is the bundle's speed as a multiple of that one's."""
    clear = "\r\033[K" if sys.stdout.isatty() else ""  # the line of progress
    unmet = counted = 0
    for line in sys.stdin:
        entry = json.loads(line)
        if "contenders" not in entry:
            print(f"level {entry['level']}, {entry['cases']} cases; bundle's speed as a multiple of each other's")
            continue
        case = Case(entry)
        limit = case.limit
        others = [f"{c['name']} {c['ratio']:.2f}" for c in case.of_kind("member", "level", "peer", "reference")]
        if limit:
            others.append(f"limit {limit['ratio']:.2f}")
        goals = case.goal_results()
        unmet += sum(goal.met is False for goal in goals)
        counted += sum(goal.met is not None for goal in goals)
        print(f"{clear}{case.title:52} {case.place:>11} {case.figure:>10} ±{50 * case.bundle['spread']:.0f} %  "
              + ", ".join(others) + "".join(f"; goal {str(goal).replace('**', '')}" for goal in goals), flush=True)
    print(f"{counted - unmet} of {counted} goals met")


# The page

FAMILIES = {
    "search": "Searching for a byte, comparing",
    "find": "Searching for patterns",
    "copy": "Copying, filling, slices",
    "in place": "Changing bytes in place",
    "gathering": "Gathering and expanding",
    "min and max": "Minimum and maximum",
    "scaling": "Scaling and groups of four",
    "floats": "Pairs of floats",
}


def output_of(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()
    except (OSError, subprocess.CalledProcessError):
        return ""


def machine(header):
    facts = dict(line.split(":", 1) for line in output_of("lscpu").splitlines() if ":" in line)
    processor = facts.get("Model name", "unknown processor").strip()
    caches = ", ".join(f"{name} {facts[name + ' cache'].split('(')[0].strip()}"
                       for name in ("L1d", "L2", "L3") if name + " cache" in facts)
    commit = output_of("git", "describe", "--always", "--dirty", "--exclude=*")
    packages = ["libc6", "librust-memchr-dev", "libisal-dev", "libvolk2-dev", "libsleef-dev", "libopencv-core-dev"]
    installed = output_of("dpkg-query", "--show", "--showformat=${Package} ${Version}\n", *packages)
    versions = ", ".join(dict.fromkeys(installed.splitlines()))  # a library may be there for two architectures
    zilla = "build/peers/node_modules/stringzilla/package.json"
    if os.path.exists(zilla):
        with open(zilla, encoding="utf-8") as file:
            versions += f", stringzilla {json.load(file)['version']}"
    return (f"{processor} ({facts.get('CPU(s)', '?').strip()} processors, {caches}), Linux "
            f"{output_of('uname', '-r')}; level `{header['level']}`; GCC {header['compiler']}; commit {commit}, "
            f"{output_of('date', '+%F')}. Peers: {versions}.")


def geometric_mean(values):
    return math.exp(statistics.mean(math.log(v) for v in values)) if values else float("nan")


def rival_means(cases):
    """How many times as fast as each rival FindBytesZOR is, over all rows."""
    rows = [c for c in cases if c.member == "FindBytesZOR"]
    means = {}
    for rival in RIVALS:
        ratios = [c["ratio"] for case in rows for c in case.contenders if c["name"] == rival]
        if ratios:
            means[rival] = geometric_mean(ratios)
    return means


def opening(cases):
    large = [c for c in cases if c.size >= 4096 and c.limit and c.family in ("search", "in place", "copy")]
    reached = statistics.median(c.limit["ratio"] for c in large)
    means = ", ".join(f"{mean:.1f} times as fast as {rival}" for rival, mean in rival_means(cases).items())
    call = min(c.bundle["ns"] for c in cases if c.size == 16)
    return (f"Use the members wherever a program would loop over bytes: searching, comparing, copying, inverting, "
            f"swapping and mirroring run at {reached:.2f} of the speed at which this machine can load and store the "
            f"same bytes (median of the rows from 4 KiB on). Patterns are found {means} (geometric mean of all rows). "
            f"A call costs {call:.0f} ns or more, so that ranges of some hundred bytes and up gain most.")


def goals_section(cases):
    results = [(case, goal) for case in cases for goal in case.goal_results()]
    judged = [r for r in results if r[1].met is not None]
    unmet = [r for r in judged if not r[1].met]
    lines = [f"{len(judged) - len(unmet)} of {len(judged)} goals are met; {len(results) - len(judged)} cannot be "
             "measured on this machine."]
    for rival, mean in rival_means(cases).items():
        lines.append(f"- FindBytesZOR in the mean: {mean:.2f} times {rival}, goal more than 1: "
                     + ("met" if mean > 1 else "**not met**"))
    if not unmet:
        return lines
    lines += ["", "| Not met | Goal | Sizes, with what was reached |", "|---|---|---|"]
    rows = {}
    for case, goal in unmet:
        rows.setdefault((case.title, goal.text), []).append(f"{case.place} {goal.figure}")
    lines += [f"| {title} | {text} | {', '.join(places)} |" for (title, text), places in rows.items()]
    with open(os.path.join(os.path.dirname(__file__), "unmet.md"), encoding="utf-8") as file:
        lines += ["", file.read().strip()]
    return lines


def table(cases):
    yield "| Case | Size | Bundle | Best peer | to peer | to limit | Spread | Goal |"
    yield "|---|---|---|---|---|---|---|---|"
    for case in cases:
        peer, limit = case.best_peer, case.limit
        name = "-" if not peer else peer["name"] + ("" if peer["same_result"] else " (other rounding)")
        goals = "; ".join(str(goal) for goal in case.goal_results())
        yield (f"| {case.title} | {case.place} | {case.figure} | {name} | {peer['ratio']:.2f}" if peer else
               f"| {case.title} | {case.place} | {case.figure} | - | -") + (
            f" | {limit['ratio']:.2f}" if limit else " | -") + f" | {100 * case.bundle['spread']:.0f} % | {goals} |"


COLOURS = ["#1b6ca8", "#d1495b", "#2a9d5c", "#8d5fb0", "#c77d0a", "#3aa6a6", "#7a7a7a", "#a8327e", "#5b7f1b"]


def chart(cases, title, file):
    """Bytes per second by size: members drawn through, each one's best peer broken, the limit dotted."""
    rows = {}
    for case in cases:
        if not case.misaligned:
            rows.setdefault(case.title, []).append(case)
    rows = {name: sorted(row, key=lambda c: c.size) for name, row in rows.items() if len(row) >= 3}
    if not rows:
        return False
    blocks, plots = [], []

    def line(points, style, name):
        block = f"$data{len(blocks)} << EOD\n" + "\n".join(f"{x} {y}" for x, y in points) + "\nEOD"
        plots.append(f"$data{len(blocks)} with lines {style} " + (f"title '{name}'" if name else "notitle"))
        blocks.append(block)

    for index, (name, row) in enumerate(list(rows.items())[:len(COLOURS)]):
        colour = f"lc rgb '{COLOURS[index]}'"
        line([(c.size, c.speed(c.bundle)) for c in row], f"lw 2 {colour}", name)
        peers = [(c.size, c.speed(c.best_peer)) for c in row if c.best_peer]
        if peers:
            line(peers, f"lw 1 dt 2 {colour}", "")
    limits = {}
    for row in rows.values():
        for case in row:
            if case.limit:
                limits[case.size] = max(limits.get(case.size, 0), case.speed(case.limit))
    if limits:
        line(sorted(limits.items()), "lw 1 dt 3 lc rgb 'black'", "limit")
    ticks = ", ".join(f"'{size_text(4 ** k)}' {4 ** k}" for k in range(2, 15, 2))
    script = "\n".join(blocks) + f"""
set terminal svg noenhanced size 900,560 font 'sans-serif,13' background 'white'
set output '{file}'
set title '{title}'
set logscale x 2
set logscale y 10
set xtics ({ticks})
set ylabel 'GB/s'
set grid lc rgb '#dddddd'
set key below
plot {', '.join(plots)}
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    return True


def page(results, folder):
    with open(results, encoding="utf-8") as file:
        header, cases = read(file)
    charts = os.path.join(folder, "charts")
    os.makedirs(charts, exist_ok=True)
    out = ["# Performance", "", opening(cases), "", "## The machine", "", machine(header), "",
           "Every member is called through its registered record, on a host of two loads for each question; results "
           "are compared with the plain rule before their time counts. Bundle, peers and limit take turns in the "
           "same run on one processor; figures are medians, ratios are the bundle's speed to the other's in the same "
           "round, spread is the distance of the quartiles. The limit is a pass that loads and stores the same bytes "
           "and does nothing else. “+ 1” is one byte off alignment. "
           "`./bench report` makes this page; `./bench MEMBER` measures one member.",
           "", "## Goals", "", *goals_section(cases)]
    for family, title in FAMILIES.items():
        rows = [c for c in cases if c.family == family]
        if not rows:
            continue
        out += ["", f"## {title}", ""]
        file = family.replace(" ", "-") + ".svg"
        if chart(rows, title, os.path.join(charts, file)):
            out += [f"![{title}: bytes per second by size, members drawn through, best peers broken, "
                    f"the limit dotted](charts/{file})", ""]
        out += table(rows)
    with open(os.path.join(folder, "performance.md"), "w", encoding="utf-8") as file:
        file.write("\n".join(out) + "\n")
    print(f"{folder}/performance.md and its charts are written")


README_ROWS = [
    ("Find a byte", "FindByteZOR", "", 262144),
    ("Find the first other byte", "FindNotByteZOR", "", 262144),
    ("Find 8 bytes in English text", "FindBytesZOR", "text, 8 bytes, absent", 262144),
    ("Find 64 bytes in DNA", "FindBytesZOR", "dna, 64 bytes, absent", 262144),
    ("Copy", "CopyBytesZOR", "to another block", 262144),
    ("Invert", "InvertBytesZOR", "", 262144),
    ("Swap 32-bit units", "SwapBytes32ZOR", "", 262144),
    ("Smaller of two bytes each", "MinZOR", "UInt8", 262144),
    ("Take 3 bytes out of every 4", "CopyNthBytesZOR", "3 of 4 bytes", 262144),
    ("Polar to Cartesian", "_ConvertPolarToCartesian", "", 262144),
]


def readme(results):
    with open(results, encoding="utf-8") as file:
        _, cases = read(file)
    found = {(c.member, c.variant, c.size): c for c in cases if not c.misaligned}
    print("| 256 KiB | Bundle, GB/s | Best peer, GB/s | Ratio |\n|---|---|---|---|")
    for title, *key in README_ROWS:
        case = found[tuple(key)]
        peer = case.best_peer
        print(f"| {title} (`{case.member}`) | {digits(case.speed(case.bundle))} | "
              f"{digits(case.speed(peer))} ({peer['name']}) | {peer['ratio']:.2f} |")


if __name__ == "__main__":
    {"console": console, "page": page, "readme": readme}[sys.argv[1]](*sys.argv[2:])
