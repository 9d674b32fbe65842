"""Where memory is short a document comes out whole, or not at all and with the reason, wherever the memory ran out. About every
tenth limit is tried, and each of them where VX_SLOW is set."""
import collections
import concurrent.futures
import os
import subprocess
import sys
import unittest

from vxcommand import CommandTest, SANITIZED, VX, sample

KIB = 1024
SLOW = os.environ.get("VX_SLOW", "0") not in ("", "0")


@unittest.skipIf(SANITIZED, "a sanitizer needs more address space than a memory limit leaves")
class MemorySweep(CommandTest):
    # These have Roman and Japanese text, gradients, much of everything, and overprint.
    SAMPLES = ("text-point", "text-japanese", "gradients", "poster", "overprint")
    FORMATS = ("png", "svg", "pdf")
    LIMITS = range(1 << 10, (11 << 10) + 1, 64)  # KiB: from what hardly lets the worker begin to enough for most
    STRIDE = 23  # of a selection; each document begins with another limit

    def render(self, name, kind, limit=None):
        """Returns the exit status, the messages, and the output or None."""
        output = self.path(f"{name}-{limit}.{kind}")
        words = [] if limit is None else ["--max-memory", f"{limit}K"]
        ended = subprocess.run([VX, "render", sample(name), "-q", "-o", output, *words], capture_output=True, text=True,
                               stdin=subprocess.DEVNULL, timeout=120)
        data = None
        if os.path.exists(output):
            with open(output, "rb") as file:
                data = file.read()
            os.remove(output)
        return ended.returncode, ended.stderr.splitlines(), data

    def fate(self, name, kind, limit, whole):
        """Returns "whole", "refused", or what is wrong."""
        status, messages, data = self.render(name, kind, limit)
        if (status, messages) == (0, []):
            return "whole" if data == whole else f"{name}.{kind} at {limit} KiB: not what it is without a limit"
        if status != 5 or data is not None or len(messages) != 1 or not self.tells_truth(name, messages[0]):
            return f"{name}.{kind} at {limit} KiB: status {status}, {messages}, written: {data is not None}"
        return "refused"

    @staticmethod
    def tells_truth(name, message):
        return message.startswith(f"vx: {sample(name)}: ") and (
            " of memory, nothing written: allow more with --max-memory" in message
            or "the picture needs more memory than " in message)

    def test_a_document_is_whole_or_refused(self):
        fates = collections.Counter()
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            for number, (name, kind) in enumerate((name, kind) for name in self.SAMPLES for kind in self.FORMATS):
                status, messages, whole = self.render(name, kind)
                self.assertEqual((status, messages), (0, []), name)
                limits = self.LIMITS if SLOW else self.LIMITS[number % self.STRIDE::self.STRIDE]
                found = collections.Counter(pool.map(lambda limit: self.fate(name, kind, limit, whole), limits))
                print(f"{name}.{kind}:", ", ".join(f"{count} {fate}" for fate, count in sorted(found.items())
                                                   if fate in ("whole", "refused")), flush=True)
                fates.update(found)
        odd = [fate for fate in fates if fate not in ("whole", "refused")]
        print(f"{sum(fates.values())} runs: {fates['whole']} whole, {fates['refused']} refused, {len(odd)} otherwise")
        self.assertEqual(odd, [], "\n".join(odd))
        self.assertGreater(fates["whole"], 0)
        self.assertGreater(fates["refused"], 0)
        self.assertEqual(self.files(), [])


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[1:]], verbosity=2)
