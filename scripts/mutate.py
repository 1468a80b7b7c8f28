#!/usr/bin/env python3
"""How many planted one-line faults of src/ the tests catch: sampled mutation testing.

A mutant is a copy of src/ with one small fault planted: a comparison or a
logical operator flipped, a constant off by one, a guard dropped, two
neighbouring appends swapped, two arguments exchanged, a negation lost. Sites
are found in every folder of src/; a seeded sample spread evenly over the
folders is run, together with the named mutants of scripts/mutants.toml. Each
mutant is written into its file, built incrementally in its own build
directory, run against the unit and then the integration tests, and reverted.
A failing test, a crash or a hang (tests running five times as long as
on the unmutated tree) kills it; a sampled mutant that does not build is not
counted and gives its place to the next one drawn from its folder; one judged
equivalent in scripts/mutants.toml is reported with its reason and not run. The
score is the share of the remaining mutants killed.

The file is restored on every way out, Ctrl-C included; a run that was killed
outright is repaired from the backup in the build directory at the next start.
"""
import argparse
import hashlib
import json
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import time
import tomllib
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
CATALOGUE = ROOT / "scripts" / "mutants.toml"
FOLDERS = ["os", "codec", "dataset", "extractors", "collection", "net", "service",
           "platform/linux", "platform/profile"]
TARGETS = ["tavrin_unit_tests", "tavrin_integration_tests", "tavrin"]


@dataclass(frozen=True)
class Mutant:
    id: str
    path: str  # relative to ROOT
    line: int  # 1-based; a swap changes this line and the next
    operator: str
    before: tuple  # the lines as they are
    after: tuple  # the lines as the mutant has them
    note: str = ""

    @property
    def folder(self):
        return folder_of(self.path)

    def describe(self):
        change = " / ".join(a.strip() for a in self.after) or "(removed)"
        return f"{self.path}:{self.line} [{self.operator}] {change}"


def folder_of(path):
    parts = Path(path).parts[1:]
    return "/".join(parts[:2]) if parts[0] == "platform" else parts[0]


# --- finding the sites


def code_only(lines):
    """The lines with comments and the insides of literals blanked, so that
    operators are looked for in code alone. Lengths are kept."""
    state = None  # None, "block" or the delimiter of an open raw string
    for line in lines:
        out, i = [], 0
        while i < len(line):
            if state is not None:
                closing = "*/" if state == "block" else ")" + state + '"'
                end = line.find(closing, i)
                stop = len(line) if end < 0 else end + len(closing)
                out.append(" " * (stop - i))
                i, state = stop, (state if end < 0 else None)
                continue
            if line.startswith("//", i):
                out.append(" " * (len(line) - i))
                break
            if line.startswith("/*", i):
                out.append("  ")
                i, state = i + 2, "block"
                continue
            raw = re.match(r'(?:u8|u|U|L)?R"([^(\s]*)\(', line[i:])
            if raw and (i == 0 or not (line[i - 1].isalnum() or line[i - 1] == "_")):
                out.append(" " * raw.end())
                i, state = i + raw.end(), raw.group(1)
                continue
            if line[i] in "\"'":
                quote, j = line[i], i + 1
                while j < len(line) and line[j] != quote:
                    j += 2 if line[j] == "\\" else 1
                j = min(j, len(line) - 1)
                out.append(quote + " " * (j - i - 1) + line[j])
                i = j + 1
                continue
            out.append(line[i])
            i += 1
        yield "".join(out)


FLIPS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
         "&&": "||", "||": "&&", "+": "-", "-": "+", "*": "/", "/": "*"}
# Binary operators stand between blanks in clang-format's layout, which tells
# `a < b` from `std::vector<int>` and `a * b` from `int* p`.
BINARY = [("relational", re.compile(r"(?<= )(<=|>=|==|!=|<|>)(?= )")),
          ("logical", re.compile(r"(?<= )(&&|\|\|)(?= )")),
          ("arithmetic", re.compile(r"(?<= )([-+*/])(?= )"))]
NEGATION = re.compile(r"(?<![\w)\]!=<>])!(?=[\w(*])")
CONSTANT = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F]+|\d+)([uUlL]*)(?![\w.'])")
CONDITION = re.compile(r"\b(?:if|while) \(")
RETURNED = re.compile(r"\breturn (true|false);")
APPEND = re.compile(r"^(\s*)([\w.\->*()]+?)(\.|->)(append|push_back|emplace_back)\(.*\);$")
CALL = re.compile(r"\b(\w+)\(([\w.:>\-]+), ([\w.:>\-]+)\)")
SYMMETRIC = {"min", "max", "swap", "hypot", "pair", "make_pair", "equal", "tie"}


def closing_paren(masked, opening):
    depth = 0
    for i in range(opening, len(masked)):
        depth += {"(": 1, ")": -1}.get(masked[i], 0)
        if depth == 0:
            return i
    return None


def line_sites(line, masked):
    """(operator, start, end, replacement) for every single-line site."""
    for name, pattern in BINARY:
        for m in pattern.finditer(masked):
            yield name, m.start(), m.end(), FLIPS[m.group(1)]
    for m in NEGATION.finditer(masked):
        yield "negation", m.start(), m.end(), ""
    if "static_assert" not in masked:
        for m in CONSTANT.finditer(masked):
            text, suffix = m.group(1), m.group(2)
            value = int(text, 0)
            form = (lambda v: hex(v)) if text.lower().startswith("0x") else str
            for changed in (value + 1, value - 1):
                if changed >= 0:
                    yield "constant", m.start(), m.end(), form(changed) + suffix
    for m in CONDITION.finditer(masked):
        end = closing_paren(masked, m.end() - 1)
        if end is not None and masked[m.end():end].strip() not in ("true", "false"):
            yield "condition", m.end(), end, "false"
    for m in RETURNED.finditer(masked):
        yield "boolean", m.start(1), m.end(1), {"true": "false", "false": "true"}[m.group(1)]
    for m in CALL.finditer(masked):
        if m.group(1) not in SYMMETRIC and m.group(2) != m.group(3):
            yield ("arguments", m.start(2), m.end(3),
                   line[m.start(3):m.end(3)] + ", " + line[m.start(2):m.end(2)])


def mutant_id(path, operator, before, after, occurrence):
    digest = hashlib.sha1("\0".join([path, operator, *before, *after, str(occurrence)]).encode())
    return folder_of(path).replace("platform/", "") + "-" + digest.hexdigest()[:7]


def generated_mutants(path):
    relative = str(path.relative_to(ROOT))
    lines = path.read_text().split("\n")
    seen = {}

    def make(operator, index, before, after):
        key = (operator, before, after)
        seen[key] = seen.get(key, 0) + 1
        return Mutant(mutant_id(relative, operator, before, after, seen[key]), relative,
                      index + 1, operator, before, after)

    masks = list(code_only(lines))
    for index, (line, masked) in enumerate(zip(lines, masks)):
        if masked.lstrip().startswith("#") or not masked.strip():
            continue
        for operator, start, end, replacement in line_sites(line, masked):
            yield make(operator, index, (line,), (line[:start] + replacement + line[end:],))
        following = lines[index + 1] if index + 1 < len(lines) else ""
        first, second = APPEND.match(line), APPEND.match(following)
        if (first and second and first.group(1) == second.group(1)
                and first.group(2) == second.group(2) and line.strip() != following.strip()):
            yield make("swap", index, (line, following), (following, line))


def catalogue():
    with open(CATALOGUE, "rb") as file:
        return tomllib.load(file)


def named_mutants(entries):
    for entry in entries:
        path = ROOT / entry["file"]
        lines = path.read_text().split("\n")
        found = [i for i, line in enumerate(lines) if entry["find"] in line]
        if len(found) != 1:
            sys.exit(f"mutants.toml: {entry['id']}: {entry['find']!r} is on {len(found)} lines "
                     f"of {entry['file']}, not on one")
        line = lines[found[0]]
        yield Mutant(entry["id"], entry["file"], found[0] + 1, "named", (line,),
                     (line.replace(entry["find"], entry["replace"], 1),), entry["fault"])


def all_mutants(build, max_includers):
    """The generated mutants of the sources the build compiles, and of the
    headers that at most `max_includers` translation units include: one
    mutant in a header that most of the tree includes rebuilds most of it."""
    commands = json.loads((build / "compile_commands.json").read_text())
    compiled = {Path(command["file"]).resolve() for command in commands}
    includers = includer_counts(compiled)
    for path in sorted((ROOT / "src").rglob("*")):
        wanted = path in compiled if path.suffix == ".cpp" else includers.get(path, 0) <= max_includers
        if path.suffix in (".cpp", ".hpp") and wanted:
            yield from generated_mutants(path)


INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.M)
INCLUDE_DIRECTORIES = [ROOT / "src", ROOT / "include", ROOT / "tools", ROOT / "tools" / "sandbox",
                       ROOT / "tests" / "support"]


def includer_counts(sources):
    """How many of `sources` include each header, directly or through others."""
    def included(path):
        for name in INCLUDE.findall(path.read_text(errors="replace")):
            for directory in (path.parent, *INCLUDE_DIRECTORIES):
                if (directory / name).is_file():
                    yield (directory / name).resolve()
                    break

    counts = {}
    for source in sources:
        seen, pending = set(), [source]
        while pending:
            for header in included(pending.pop()):
                if header not in seen:
                    seen.add(header)
                    pending.append(header)
        for header in seen:
            counts[header] = counts.get(header, 0) + 1
    return counts


def sample(mutants, count, seed):
    """`count` mutants spread evenly over the folders, and the spares of each
    folder in the order they are drawn: a line with sites is drawn at random,
    then one of its sites, folder after folder in turn. A chosen mutant that
    does not build is replaced by the next spare of its folder."""
    generator = random.Random(seed)
    by_folder = {}
    for mutant in sorted(mutants, key=lambda m: m.id):
        by_folder.setdefault(mutant.folder, {}).setdefault((mutant.path, mutant.line), []).append(
            mutant)
    drawn = {}
    for folder in FOLDERS:
        lines = list(by_folder.get(folder, {}).values())
        generator.shuffle(lines)
        drawn[folder] = [generator.choice(sites) for sites in lines]
    chosen = []
    while len(chosen) < count and any(drawn.values()):
        for folder in FOLDERS:
            if drawn[folder] and len(chosen) < count:
                chosen.append(drawn[folder].pop(0))
    return chosen, drawn


# --- applying, building, testing


class Planted:
    """Writes a mutant into its file for the length of a `with` block; the
    original comes back on every way out, and sits in `backup` meanwhile."""

    def __init__(self, mutant, backup):
        self.mutant, self.backup = mutant, backup
        self.path = ROOT / mutant.path

    def __enter__(self):
        text = self.path.read_text()
        lines = text.split("\n")
        at = self.mutant.line - 1
        if tuple(lines[at:at + len(self.mutant.before)]) != self.mutant.before:
            raise RuntimeError(f"{self.mutant.describe()}: the file has changed")
        self.backup.mkdir(parents=True, exist_ok=True)
        (self.backup / "path").write_text(self.mutant.path)
        shutil.copy2(self.path, self.backup / "original")
        lines[at:at + len(self.mutant.before)] = self.mutant.after
        self.path.write_text("\n".join(lines))
        return self

    def __exit__(self, *_):
        restore(self.backup)


def restore(backup):
    """Puts back a file a mutant was written into, if one is still planted."""
    if (backup / "path").exists():
        shutil.copyfile(backup / "original", ROOT / (backup / "path").read_text())
        (backup / "path").unlink()


def run(command, timeout, **kwargs):
    """The command's exit status and output; None when it outlived `timeout`."""
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True, start_new_session=True, **kwargs)
    try:
        output, _ = process.communicate(timeout=timeout)
        return process.returncode, output
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        process.communicate()
        return None, ""
    except BaseException:
        os.killpg(process.pid, signal.SIGKILL)
        raise


def configure(build):
    if (build / "build.ninja").exists():
        # Regenerates the build, and the list of sources it compiles, when the
        # tree has changed since (a merge that moved files).
        status, output = run(["ninja", "-C", str(build), "build.ninja"], 900)
        if status != 0:
            sys.exit(f"regenerating {build} failed:\n{output}")
        return
    # Optimized but without debug information, which keeps each mutant's
    # compile and links short; the standard library's assertions turn an
    # access out of bounds into a crash, as the sanitizer build of CI would.
    # The operating-system seams are built with their portable fallbacks, so
    # that os/ has code to mutate.
    status, output = run(["cmake", "-S", str(ROOT), "-B", str(build), "-G", "Ninja",
                          "-DCMAKE_BUILD_TYPE=None", "-DCMAKE_CXX_FLAGS=-O1 -D_GLIBCXX_ASSERTIONS",
                          "-DTAVRIN_PORTABLE_FALLBACKS=ON", "-DTAVRIN_BUILD_SHARED=OFF",
                          "-DTAVRIN_INSTALL=OFF", "-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld",
                          "-DCMAKE_CXX_COMPILER_LAUNCHER=ccache",
                          "-DCMAKE_C_COMPILER_LAUNCHER=ccache"], 900)
    if status != 0:
        sys.exit(f"configuring {build} failed:\n{output}")


def build_targets(build, jobs):
    return run(["ninja", "-C", str(build), f"-j{jobs}", *TARGETS], 3600)


FAILED_TEST = re.compile(r"^\[  FAILED  \] ([^\s,]+)", re.M)


def test(build, timeout):
    """None when every test passes, else what failed first.

    The executables ctest runs, each as one process that stops at the first
    failure: ctest's process per test case costs more than a minute per mutant
    on two cores, and a crash or a hang counts the same either way."""
    started = time.monotonic()
    for executable in ("tavrin_unit_tests", "tavrin_integration_tests"):
        left = timeout - (time.monotonic() - started)
        status, output = run([str(build / "tests" / executable), "--gtest_fail_fast",
                              "--gtest_brief=1"], max(left, 1), cwd=build / "tests")
        if status is None:
            return f"{executable} hangs"
        if status != 0:
            failed = FAILED_TEST.search(output)
            return failed.group(1) if failed else f"{executable} exits with {status}"
    return None


# --- the run


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--seed", type=int, default=18, help="the sample's seed (default 18)")
    parser.add_argument("--count", type=int, default=63,
                        help="generated mutants to sample (default 63, seven per folder)")
    parser.add_argument("--folder", action="append", choices=FOLDERS,
                        help="sample only from this folder (repeatable)")
    parser.add_argument("--ids", help="run exactly these mutants (comma-separated ids)")
    parser.add_argument("--no-named", action="store_true", help="leave out the named mutants")
    parser.add_argument("--list", action="store_true", help="show the selection, run nothing")
    parser.add_argument("--build", type=Path, default=ROOT / "build-mutate")
    parser.add_argument("--jobs", type=int, default=2)
    parser.add_argument("--max-includers", type=int, default=15,
                        help="leave out headers that more translation units include (default 15)")
    parser.add_argument("--timeout", type=int,
                        help="seconds the tests of one mutant may take before it counts as a hang"
                        " (default five times the unmutated tests' time, at least a minute)")
    options = parser.parse_args()

    backup = options.build / "planted"
    restore(backup)
    configure(options.build)
    listed = catalogue()
    equivalent = {entry["id"]: entry["reason"] for entry in listed.get("equivalent", [])}
    named = list(named_mutants(listed.get("named", [])))
    generated = list(all_mutants(options.build, options.max_includers))
    if options.ids:
        wanted = options.ids.split(",")
        known = {m.id: m for m in generated + named}
        missing = [i for i in wanted if i not in known]
        if missing:
            sys.exit(f"no mutant has the id {', '.join(missing)}")
        selection, spares = [known[i] for i in wanted], {}
    else:
        pool = [m for m in generated if not options.folder or m.folder in options.folder]
        selection, spares = sample(pool, options.count, options.seed)
        if not options.no_named:
            selection += [m for m in named if not options.folder or m.folder in options.folder]

    if options.list:
        for mutant in selection:
            mark = "  (equivalent)" if mutant.id in equivalent else ""
            print(f"{mutant.id:16} {mutant.describe()}{mark}")
        return 0

    print(f"{len(selection)} mutants, {len(generated)} sites in src/; baseline build and tests")
    status, output = build_targets(options.build, options.jobs)
    if status != 0:
        sys.exit(f"the unmutated tree does not build:\n{output[-4000:]}")
    started = time.monotonic()
    failure = test(options.build, 3600)
    if failure:
        sys.exit(f"the unmutated tree fails {failure}: fix that first")
    timeout = options.timeout or max(60, round(5 * (time.monotonic() - started)))
    print(f"a mutant whose tests run longer than {timeout} s counts as a hang")

    results = []
    pending = list(selection)
    while pending:
        mutant = pending.pop(0)
        started = time.monotonic()
        if mutant.id in equivalent:
            outcome, detail = "equivalent", equivalent[mutant.id]
        else:
            with Planted(mutant, backup):
                status, output = build_targets(options.build, options.jobs)
                if status != 0:
                    outcome, detail = "unbuilt", "does not compile"
                    # A sampled mutant that does not build gives its place to the
                    # next one drawn from its folder.
                    if mutant.operator != "named" and spares.get(mutant.folder):
                        pending.insert(0, spares[mutant.folder].pop(0))
                else:
                    killer = test(options.build, timeout)
                    outcome, detail = ("killed", killer) if killer else ("survived", "")
        results.append((mutant, outcome, detail))
        print(f"[{len(results)}/{len(results) + len(pending)}] {outcome:10} {mutant.id:16} "
              f"{mutant.describe()}{'  <- ' + detail if detail else ''}"
              f"  ({time.monotonic() - started:.0f} s)", flush=True)

    report(results, options.build / "mutation-report.txt")
    return 0


def report(results, path):
    counts = {}
    for _, outcome, _ in results:
        counts[outcome] = counts.get(outcome, 0) + 1
    killed, survived = counts.get("killed", 0), counts.get("survived", 0)
    lines = [f"killed {killed}, survived {survived}, equivalent {counts.get('equivalent', 0)}, "
             f"not built {counts.get('unbuilt', 0)}"]
    if killed + survived:
        lines.append(f"score: {killed}/{killed + survived} = {100 * killed / (killed + survived):.1f} %"
                     " of the non-equivalent mutants killed")
    for kind, named in (("sampled", False), ("named", True)):
        tally = [outcome for m, outcome, _ in results
                 if (m.operator == "named") == named and outcome in ("killed", "survived")]
        if tally:
            lines.append(f"  {kind}: {tally.count('killed')}/{len(tally)} killed")
    by_folder = {}
    for mutant, outcome, _ in results:
        if outcome in ("killed", "survived"):
            tally = by_folder.setdefault(mutant.folder, [0, 0])
            tally[outcome == "survived"] += 1
    lines.append("by folder: " + ", ".join(f"{folder} {k}/{k + s}"
                                           for folder, (k, s) in sorted(by_folder.items())))
    survivors = sorted((m for m, outcome, _ in results if outcome == "survived"),
                       key=lambda m: (m.path, m.line))
    if survivors:
        lines.append("survivors:")
        for mutant in survivors:
            lines.append(f"  {mutant.id:16} {mutant.describe()}")
            lines.extend(f"      was: {before.strip()}" for before in mutant.before)
    equivalents = [(m, why) for m, outcome, why in results if outcome == "equivalent"]
    if equivalents:
        lines.append("judged equivalent:")
        lines.extend(f"  {m.id:16} {m.describe()}: {why}" for m, why in equivalents)
    text = "\n".join(lines)
    print(text)
    path.write_text(text + "\n")


if __name__ == "__main__":
    # Ctrl-C, a polite kill and a closed terminal all unwind through Planted,
    # which restores the file.
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit(130))
    sys.exit(main())
