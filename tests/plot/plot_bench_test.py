"""The bench plots: plot_bench.py run on a short bench.csv writes one SVG per
family and precision, and each names every series of its family in its
legend, the axes and the units.

usage: plot_bench_test.py PATH/TO/plot_bench.py
"""
import csv
import os
import re
import subprocess
import sys
import tempfile
import unittest

SCRIPT = None
HEADER = ["family", "precision", "case", "peer", "ours_ns", "peer_ns", "ratio", "ours_error", "peer_error",
          "peer_vector", "note"]
FFTW = "FFTW (patient, new-array execute)"


def rows():
    out = []
    for n in (2, 3, 8, 12, 64):
        for variant, scale in (("fwd", 1.0), ("inv", 1.1)):
            ours, peer = 2.0 * n * scale, 3.0 * n
            out.append(["cdft", "64fc", f"N={n} {variant}", FFTW, ours, peer, peer / ours, 1e-16, 2e-16,
                        "sse2" if n < 12 else "avx", ""])
    for order in (1, 2, 3):
        ours = 0.5 * 2 ** order
        out.append(["wht", "32f", f"order {order}", "textbook radix-2 loop (-O3, x86-64)", ours, 3 * ours, 3.0,
                    1e-8, 1e-8, "", "1.0 vs 0.3 add/ns"])
    for n in (2, 4, 8, 1024, 65536):
        out.append(["dct4", "64f", f"N={n}", "FFTW REDFT11 patient", 1.5 * n, "", "", 1e-16, "", "", ""])
    return out


def svg_texts(path):
    with open(path) as f:
        return re.findall(r"<text[^>]*>([^<]*)</text>", f.read())


class PlotBench(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix="kfpg-plot-")
        csv_path = os.path.join(cls.folder, "bench.csv")
        with open(csv_path, "w", newline="") as f:
            writer = csv.writer(f)
            writer.writerow(HEADER)
            writer.writerows(rows())
        run = subprocess.run([sys.executable, SCRIPT, csv_path], capture_output=True, text=True)
        cls.status, cls.stdout, cls.stderr = run.returncode, run.stdout, run.stderr

    def svg(self, name):
        path = os.path.join(self.folder, name)
        self.assertTrue(os.path.isfile(path), f"{name} missing; stderr: {self.stderr}")
        return svg_texts(path)

    def test_one_svg_per_family_and_precision_named_in_the_output(self):
        self.assertEqual(self.status, 0, self.stderr)
        written = sorted(os.path.basename(p) for p in self.stdout.split())
        self.assertEqual(written, ["cdft_64fc.svg", "dct4_64f.svg", "wht_32f.svg"])
        for name in written:
            self.svg(name)

    def test_every_series_is_named(self):
        cases = {
            "cdft_64fc.svg": ["ours fwd", "FFTW fwd", "ours inv", "FFTW inv", "FFTW plan: sse2", "FFTW plan: avx"],
            "wht_32f.svg": ["ours", "textbook radix-2 loop"],
            "dct4_64f.svg": ["ours"],
        }
        for name, series in cases.items():
            texts = self.svg(name)
            for s in series:
                self.assertIn(s, texts, f"{name} does not name the series {s!r}")

    def test_axes_say_what_and_in_which_unit(self):
        cdft = self.svg("cdft_64fc.svg")
        self.assertIn("ns per call (median, log scale)", cdft)
        self.assertIn("N (transform length, log scale)", cdft)
        self.assertTrue(any(t.startswith("ratio peer / ours") for t in cdft))
        self.assertIn("order (N = 2^order)", self.svg("wht_32f.svg"))

    def test_a_family_without_peer_timings_has_no_ratio_panel(self):
        dct4 = self.svg("dct4_64f.svg")
        self.assertFalse(any(t.startswith("ratio") for t in dct4))
        self.assertNotIn("FFTW REDFT11 patient", dct4)


if __name__ == "__main__":
    SCRIPT = sys.argv.pop(1)
    unittest.main()
