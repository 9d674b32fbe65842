#!/usr/bin/env python3
"""What bench/compare does once everything is built: see there.

Every program does the same work on the same drawing. Programs take turns, so that other work on the machine slows all
of them alike, and the fastest turn of each counts: processor time of the program and its children, in units of the
loop that only finds lines, splits words and converts numbers of the same document.
"""

import argparse
import json
import os
import shlex
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

KINDS = ("paths", "text", "lines", "gradients")
FORMATS = ("vx", "ps", "pdf", "svg")
MEGABYTE = 1_000_000
GHOSTSCRIPT = ["gs", "-q", "-dBATCH", "-dNOPAUSE"]
PLAIN_PDF = "PDF, not compressed"
WORKS = ("parse", "PNG", "PDF", PLAIN_PDF, "SVG")
GROWTH = ("parse", "PNG", "PDF", "SVG")
SAMPLES = Path(__file__).resolve().parent.parent / "samples"
SMALL_TURNS = 10  # for each of a document that takes long


class Job:
    """One program doing one kind of work."""

    def __init__(self, work, program, command):
        self.work, self.program, self.command = work, program, [str(part) for part in command]
        self.seconds = self.mebibytes = None

    def run(self, measure):
        done = subprocess.run([measure, "run", *self.command], capture_output=True, text=True, check=False)
        if done.returncode != 0:
            reason = (done.stderr.strip().splitlines() or [f"exit status {done.returncode}"])[-1]
            sys.exit(f"compare: {shlex.join(self.command)}: {reason}")
        seconds, kibibytes = done.stdout.split()
        if self.seconds is None or float(seconds) < self.seconds:
            self.seconds = float(seconds)
        self.mebibytes = max(self.mebibytes or 0, int(kibibytes) / 1024)


class Bench:
    def __init__(self, options, folder):
        self.options, self.folder = options, folder
        self.vx = options.build / "bin/vx"
        self.measure = options.build / "bin/vxmeasure"
        self.skipped = set()

    def has(self, tool):
        if shutil.which(tool):
            return True
        if tool not in self.skipped:
            print(f"compare: {tool} is left out, it is not installed", file=sys.stderr)
        self.skipped.add(tool)
        return False

    def make(self, kind, megabytes, language):
        path = self.folder / f"{kind}-{megabytes:g}.{language}"
        if not path.exists():
            size = int(megabytes * MEGABYTE)
            subprocess.run([self.measure, "write", kind, language, str(size), path], check=True)
        return path

    def render(self, document, name, *settings):
        return [self.vx, "render", "-q", "--max-time", "0", "--max-memory", "0", "--max-output", "0", *settings, document, "-o",
                self.folder / name]

    def our_jobs(self, document):
        loop = shlex.split(self.options.loop) if self.options.loop else [self.measure, "loop"]
        return [
            Job("loop", "the token loop", [*loop, document]),
            Job("parse", "vx, the plug-in alone", [self.measure, "parse", document]),
            Job("PNG", "vx", self.render(document, "vx.png", "--width", "1000")),
            Job("PDF", "vx", self.render(document, "vx.pdf")),
            Job("SVG", "vx", self.render(document, "vx.svg")),
        ]

    def plain_pdf_job(self, document):
        return Job(PLAIN_PDF, "vx", self.render(document, "plain.pdf", "--compress", "none"))

    def rival_jobs(self, same):
        """same: the drawing in other languages, by language."""
        page, out = same.get("pdf"), self.folder
        program = same.get("ps", page)
        if program and self.has("gs"):
            write = [*GHOSTSCRIPT, "-sDEVICE=pdfwrite", "-o", out / "gs.pdf"]
            smooth = ["-r72", "-dTextAlphaBits=4", "-dGraphicsAlphaBits=4"]
            yield Job("parse", "Ghostscript, nullpage", [*GHOSTSCRIPT, "-sDEVICE=nullpage", program])
            yield Job("PNG", "Ghostscript, png16m",
                      [*GHOSTSCRIPT, "-sDEVICE=png16m", *smooth, "-o", out / "gs.png", program])
            yield Job("PDF", "Ghostscript, pdfwrite", [*write, program])
            yield Job(PLAIN_PDF, "Ghostscript, pdfwrite",
                      [*write, "-dCompressPages=false", "-dCompressFonts=false", program])
        if page and self.has("pdftocairo"):
            yield Job("PNG", "pdftocairo", ["pdftocairo", "-png", "-singlefile", "-scale-to-x", "1000", "-scale-to-y",
                                            "-1", page, out / "cairo"])
            yield Job("SVG", "pdftocairo", ["pdftocairo", "-svg", page, out / "cairo.svg"])
        if page and self.has("mutool"):
            yield Job("PNG", "mutool draw", ["mutool", "draw", "-q", "-w", "1000", "-o", out / "mutool.png", page])
            yield Job("SVG", "mutool draw", ["mutool", "draw", "-q", "-F", "svg", "-o", out / "mutool.svg", page])
        if "svg" in same and self.has("rsvg-convert"):
            yield Job("PNG", "rsvg-convert",
                      ["rsvg-convert", "--unlimited", "-w", "1000", "-o", out / "rsvg.png", same["svg"]])

    def small_jobs(self):
        """Works that end before a person sees it: most of their time is what it takes to begin. The first is the unit."""
        harp, page, size = SAMPLES / "harp.vx", self.folder / "harp.pdf", ["--width", "1000"]
        subprocess.run(self.render(harp, page.name), check=True)
        yield Job("nothing", "true", [shutil.which("true")])
        yield Job("the version", "vx", [self.vx, "--version"])
        yield Job("harp.vx, facts", "vx", [self.vx, "info", harp])
        yield Job("harp.vx, PNG", "vx", self.render(harp, "harp.png", *size))
        if self.has("mutool"):
            yield Job("harp.vx, PNG", "mutool draw",
                      ["mutool", "draw", "-q", "-w", "1000", "-o", self.folder / "mutool.png", page])

    def batch_jobs(self, documents):
        def batch(language):
            return [self.vx, "batch", "-q", "-f", language, "-o", self.folder / "{stem}.{ext}", "--", *documents]

        subprocess.run(batch("pdf"), check=True, stdout=subprocess.DEVNULL)
        work = f"{len(documents)} documents, "
        for language in ("png", "svg", "pdf"):
            yield Job(work + language.upper(), "vx batch", batch(language))
        if self.has("mutool"):
            draw = f'for page; do mutool draw -q -r 150 -o {shlex.quote(str(self.folder / "page.png"))} "$page" || exit; done'
            yield Job(work + "PNG", "mutool draw, for each",
                      ["sh", "-c", draw, "sh", *(self.folder / f"{document.stem}.pdf" for document in documents)])

    def run(self, jobs, repeat):
        for _ in range(repeat):
            for job in jobs:
                job.run(self.measure)
        return jobs

    def lookups(self):
        """100,000 strings beside 3,000 fonts and beside 30: the ratio of the times, start-up aside."""
        program = self.options.build / "bin/vxbench"
        if not program.exists():
            print("compare: the number of fonts is left out, vxbench is not built", file=sys.stderr)
            return None
        done = subprocess.run([program, "--benchmark_filter=LooksUpFonts", "--benchmark_format=json"],
                              capture_output=True, text=True, check=True)
        return json.loads(done.stdout)["benchmarks"][0]["ratio"]


def markdown(head, rows):
    yield f"| {' | '.join(head)} |"
    yield "|---" * 2 + "|--:" * (len(head) - 2) + "|"
    for row in rows:
        yield f"| {' | '.join(row)} |"
    yield ""


def times(job, unit):
    ratio = job.seconds / unit
    return f"{ratio:.2f}" if ratio < 10 else f"{ratio:.1f}"


def comparison(title, jobs):
    """A table of one document, our own program first."""
    rows = [[work, job.program, times(job, jobs[0].seconds), f"{job.mebibytes:.0f} MiB"]
            for work in WORKS for job in jobs if job.work == work]
    yield f"### {title}"
    yield ""
    yield from markdown(["work", "program", "time, loop = 1", "peak memory"], rows)


def growth(runs):
    """runs: jobs by kind of document and by megabytes. The unit is the loop's time for a megabyte of the longest
    document, so that what is linear stays the same along a row, but for what it takes to start."""
    sizes = sorted({size for _, size in runs})
    kinds = list(dict.fromkeys(kind for kind, _ in runs))

    def cell(kind, size, work):
        jobs = runs.get((kind, size))
        if not jobs:
            return ""
        job = next(job for job in jobs if job.work == work)
        unit = runs[kind, sizes[-1]][0].seconds / sizes[-1] * size
        return f"{times(job, unit)}, {job.mebibytes:.0f} MiB"

    rows = [[kind, work, *(cell(kind, size, work) for size in sizes)] for kind in kinds for work in GROWTH]
    yield "### Growth"
    yield ""
    yield from markdown(["document", "vx", *(f"{size:g} MB" for size in sizes)], rows)


def processes(jobs):
    """Whole processes, in units of one that does nothing."""
    yield "### Whole processes"
    yield ""
    yield from markdown(["work", "program", "time, true = 1", "peak memory"],
                        [[job.work, job.program, times(job, jobs[0].seconds), f"{job.mebibytes:.0f} MiB"] for job in jobs])


def first_line(command):
    if not shutil.which(command[0]):
        return None
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    return (done.stdout.strip() or done.stderr.strip()).splitlines()[0]


def machine(build):
    def field(path, name):
        for line in Path(path).read_text(encoding="utf-8").splitlines():
            if line.startswith(name):
                return line.split(":" if ":" in line else "=", 1)[1].split("=")[-1].strip()
        return "unknown"

    memory = int(field("/proc/meminfo", "MemTotal").split()[0]) / 1024 / 1024
    compiler = field(build / "CMakeCache.txt", "CMAKE_CXX_COMPILER:")
    versions = [first_line(command) for command in (["gs", "--version"], ["pdftocairo", "-v"], ["mutool", "-v"],
                                                    ["rsvg-convert", "--version"])]
    versions[0] = f"Ghostscript {versions[0]}" if versions[0] else None
    yield f"{field('/proc/cpuinfo', 'model name')}, {os.cpu_count()} cores, {memory:.0f} GiB; {first_line([compiler, '--version'])}"
    yield ", ".join(version for version in versions if version)
    yield ""


def compare(bench):
    options = bench.options
    yield from machine(options.build)
    for document in options.document:
        same = {language: path for language in FORMATS[1:] if (path := document.with_suffix(f".{language}")).exists()}
        jobs = [*bench.our_jobs(document), *([bench.plain_pdf_job(document)] if options.plain else []),
                *bench.rival_jobs(same)]
        size = document.stat().st_size / MEGABYTE
        yield from comparison(f"{document.stem}, {size:.3g} MB", bench.run(jobs, options.repeat))
    if options.document:
        return
    runs = {}
    for kind in KINDS:
        for size in options.sizes:
            document = bench.make(kind, size, "vx")
            jobs = bench.our_jobs(document)
            if size == options.rivals:
                same = {} if kind == "gradients" else {each: bench.make(kind, size, each) for each in FORMATS[1:]}
                if kind == "paths":
                    jobs.append(bench.plain_pdf_job(document))
                jobs += bench.rival_jobs(same)
            runs[kind, size] = bench.run(jobs, options.repeat)
        yield from comparison(f"{kind}, {options.rivals:g} MB", runs[kind, options.rivals])
    yield from growth(runs)
    if bench.has("true"):
        documents = sorted(SAMPLES.glob("*.vx"))[:3 if options.quick else None]
        small = bench.run(list(bench.small_jobs()), options.repeat * SMALL_TURNS)
        yield from processes([*small, *bench.run(list(bench.batch_jobs(documents)), options.repeat)])
    if (ratio := bench.lookups() if options.fonts else None) is not None:
        yield f"Text beside 3,000 fonts takes {ratio:.2f} times what it takes beside 30, start-up aside."
        yield ""


def main():
    root = Path(__file__).resolve().parent.parent
    parser = argparse.ArgumentParser(prog="compare", description="Times vx beside other programs, in one run.")
    parser.add_argument("--build", type=Path, default=root / "build", help="the build folder")
    parser.add_argument("--sizes", type=lambda text: sorted(map(float, text.split(","))), default=[1, 10, 100],
                        metavar="MB,...", help="of the documents whose growth is shown (1,10,100)")
    parser.add_argument("--rivals", type=float, metavar="MB", help="which of them other programs draw too (10)")
    parser.add_argument("--repeat", type=int, default=3, metavar="N", help="turns; the fastest counts (3)")
    parser.add_argument("--document", type=Path, nargs="+", default=[], metavar="FILE",
                        help="measure with these instead; FILE's drawing as .ps, .pdf and .svg beside it is used too")
    parser.add_argument("--plain", action="store_true", help="--document: uncompressed PDF too; they have no text")
    parser.add_argument("--loop", metavar="PROGRAM", help="the unit: a program that is given a document's name")
    parser.add_argument("--markdown", type=Path, metavar="FILE", help="write the tables to FILE too")
    parser.add_argument("--quick", action="store_true", help="small documents, one turn: is everything there?")
    options = parser.parse_args()
    options.fonts = not options.quick
    if options.quick:
        options.sizes, options.repeat = [0.05, 0.1], 1
    if options.rivals is None:
        options.rivals = 10 if 10 in options.sizes else options.sizes[-1]
    if options.rivals not in options.sizes or options.repeat < 1:
        parser.error("--rivals must be one of --sizes, and --repeat at least 1")

    lines = []
    with tempfile.TemporaryDirectory(prefix="vx-compare-") as folder:
        for line in compare(Bench(options, Path(folder))):
            print(line, flush=True)
            lines.append(line)
    if options.markdown:
        options.markdown.write_text("\n".join(lines), encoding="utf-8")


if __name__ == "__main__":
    main()
