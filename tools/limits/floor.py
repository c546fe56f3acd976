#!/usr/bin/env python3
"""How close the real-data kernels run to what this processor allows.

Counts, per exported kernel, the instructions of the compiled library by the
unit they need (objdump), and takes the fewest cycles those counts allow:
    max(adds/2, multiplies/2, loads/2, stores/2, instructions/6)
with the rates tools/limits/pipes.py measures here (conversions and sign
flips run on the adders; shuffles and register copies only take issue
slots). For each family and precision it prints the FFTW/ours geometric mean
now, the one at that floor, the share of the floor the kernels reach, and
the share a target ratio would need; with --kinds, how many kernels each
limit binds and what share of the instructions are register copies,
constant loads, spill loads and stores, and shuffles.
Usage: tools/limits/floor.py LIBRARY BENCH_CSV [--ghz G] [--lengths] [--kinds]"""
import argparse, collections, csv, math, re, subprocess

ADDER = {"addpd", "subpd", "addps", "subps", "addsd", "subsd", "addss", "subss", "cvtps2pd", "cvtpd2ps",
         "xorpd", "xorps", "andpd", "andps", "orpd", "orps"}
MULTIPLIER = {"mulpd", "mulps", "mulsd", "mulss"}
SHUFFLE = {"pshufd", "shufps", "shufpd", "unpcklps", "unpckhps", "unpcklpd", "unpckhpd", "movhlps", "movlhps", "movddup"}
KINDS = ("copy", "const", "spill", "shuffle")
KERNELS = {"rdft": "kfpgDFTFwd_RToCCS_{n}_{p}", "rdft-inv": "kfpgDFTInv_CCSToR_{n}_{p}", "dht": "kfpgHartley_{n}_{p}"}
TARGETS = {"rdft": 2.0, "rdft-inv": 2.5, "dht": 2.5}


def instruction_mix(library):
    text = subprocess.run(["objdump", "-d", "--no-show-raw-insn", library], capture_output=True, text=True, check=True).stdout
    mix, current = {}, None
    for line in text.splitlines():
        head = re.match(r"^[0-9a-f]+ <(\S+)>:", line)
        if head:
            current = mix.setdefault(head.group(1), collections.Counter())
            continue
        insn = re.match(r"^\s+[0-9a-f]+:\s+(\S+)\s*(.*)", line)
        if not insn or current is None:
            continue
        op, args = insn.groups()
        if op.startswith("nop") or op == "xchg":  # padding after the return
            continue
        current["all"] += 1
        zeroing = op.startswith("xor") and args.split(",")[0] == args.split(",")[-1]
        if op in ADDER and not zeroing:
            current["add"] += 1
        elif op in MULTIPLIER:
            current["mul"] += 1
        if "(" in args and "lea" not in op:
            current["store" if args.rstrip().endswith(")") else "load"] += 1
        if op in ("movaps", "movapd", "movdqa") and "(" not in args:
            current["copy"] += 1
        elif op.startswith("mov") and "(%rip)" in args:
            current["const"] += 1  # a constant loaded on its own, not as an operand
        elif "(%rsp)" in args:
            current["spill"] += 1
        elif op in SHUFFLE and "(" not in args:
            current["shuffle"] += 1
    return mix


def limits(c):
    return {"adders": c["add"] / 2, "multipliers": c["mul"] / 2, "loads": c["load"] / 2, "stores": c["store"] / 2, "issue": c["all"] / 6}


def floor_ns(c, ghz):
    return max(limits(c).values()) / ghz


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("library")
    ap.add_argument("bench_csv")
    ap.add_argument("--ghz", type=float, default=4.2)
    ap.add_argument("--lengths", action="store_true", help="print share and ratios per length")
    ap.add_argument("--kinds", action="store_true", help="print the binding limits and the instruction kinds")
    a = ap.parse_args()
    mix = instruction_mix(a.library)
    rows = collections.defaultdict(dict)
    for r in csv.DictReader(open(a.bench_csv)):
        if r["family"] in KERNELS and r["peer_ns"]:
            rows[(r["family"], r["precision"])][int(r["case"].split("=")[1].split()[0])] = (float(r["ours_ns"]), float(r["peer_ns"]))
    geo = lambda v: math.exp(sum(map(math.log, v)) / len(v))
    for (family, precision), by_n in sorted(rows.items()):
        per = []
        for n, (ours, peer) in sorted(by_n.items()):
            f = floor_ns(mix[KERNELS[family].format(n=n, p=precision)], a.ghz)
            per.append((n, ours, peer, f))
        at_floor = geo([peer / f for _, _, peer, f in per])
        target = TARGETS[family]
        print(f"{family} {precision}: FFTW/ours {geo([p / o for _, o, p, _ in per]):.2f}, at the floor {at_floor:.2f}, "
              f"share reached {geo([f / o for _, o, _, f in per]):.2f}, share needed for {target} {target / at_floor:.2f}")
        if a.lengths:
            print("  " + " ".join(f"{n}:{f / o:.2f}/{p / o:.2f}" for n, o, p, f in per) + "  (share/ratio)")
        if a.kinds:
            counts = [mix[KERNELS[family].format(n=n, p=precision)] for n, *_ in per]
            binding = collections.Counter(max(limits(c).items(), key=lambda kv: kv[1])[0] for c in counts)
            total = sum(c["all"] for c in counts)
            print("  bound by " + ", ".join(f"{k} {v}" for k, v in binding.most_common()) + "; of all instructions: " +
                  ", ".join(f"{k} {sum(c[k] for c in counts) / total:.0%}" for k in KINDS))


if __name__ == "__main__":
    main()
