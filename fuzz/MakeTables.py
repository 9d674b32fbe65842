"""Makes what the fuzz targets are fed with from the sources, so that no operator is forgotten.

MakeTables.py lines OUT DOCUMENT...      LineBank.inc: lines of the documents, some for each last word, and the operators
MakeTables.py dictionary OUT             a dictionary of operators and comments in the form of libFuzzer
MakeTables.py seeds FOLDER DOCUMENT...   the documents as a corpus
"""
import pathlib
import re
import shutil
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
MAX_LINE = 200
MAX_LIKE = 40  # drawings have thousands of curves, but rare operators should come as often


def operators():
    table = (ROOT / "plugin/body/Operators.cpp").read_text()
    found = re.findall(r'^    \{"([^"]+)", (?:kAnyCount|\d+), ', table, re.M)
    if len(found) < 100:
        sys.exit("the operator table no longer looks as it did: see operators() in MakeTables.py")
    return found


def comments():
    found = set()
    for source in sorted((ROOT / "plugin").rglob("*.cpp")):
        found.update(re.findall(r'"(%[%A-Z_!][^"\\]*)"', source.read_text()))
    if len(found) < 20:
        sys.exit("the comments are no longer where they were: see comments() in MakeTables.py")
    return sorted(found)


def literal(text):
    return '"' + "".join(chr(byte) if 32 <= byte < 127 and byte not in b'"\\?' else "\\%03o" % byte
                         for byte in text) + '"'


def spread(lines):
    """At most MAX_LIKE of the lines that end in the same word, evenly from all of those."""
    alike = {}
    for line in sorted(lines):
        alike.setdefault(line.split()[-1] if line.strip() else b"", []).append(line)
    for found in alike.values():
        count = min(len(found), MAX_LIKE)
        yield from (found[i * len(found) // count] for i in range(count))


def main(kind, out, *documents):
    if kind == "dictionary":
        words = [word.encode() for word in operators() + comments()]
        lines = ['"%s"' % "".join("\\x%02x" % byte for byte in word) for word in words]
        pathlib.Path(out).write_text("\n".join(lines) + "\n")
    elif kind == "lines":
        lines = set()
        for document in documents:
            lines.update(re.split(rb"[\r\n]", pathlib.Path(document).read_bytes()))
        kept = spread(line for line in lines if 0 < len(line) <= MAX_LINE and b"\0" not in line)
        rows = ["constexpr const char *kLines[] = {"] + ["    %s," % literal(line) for line in kept] + ["};"]
        rows += ["constexpr const char *kOperators[] = {"]
        rows += ["    %s," % literal(name.encode()) for name in operators()] + ["};"]
        pathlib.Path(out).write_text("\n".join(rows) + "\n")
    elif kind == "seeds":
        pathlib.Path(out).mkdir(parents=True, exist_ok=True)
        for document in documents:
            if pathlib.Path(document).stat().st_size <= 65536:
                shutil.copy(document, out)


main(*sys.argv[1:])
