#!/usr/bin/env python3
"""Measures what this processor's 128-bit units sustain: the clock (from a
chain of dependent integer adds, one cycle each) and, for each instruction
class the kernels use, how many run per cycle when nothing else limits them.

Each test is a loop of independent instructions written in inline assembly,
timed on thread CPU time, so other processes on the core do not inflate it.
Usage: tools/limits/pipes.py"""
import os, subprocess, tempfile

SRC = "%%xmm8"
A = [f"xmm{i}" for i in range(8)]        # destinations of the first class in a mix
B = [f"xmm{i}" for i in range(9, 16)]    # of the second one


def ops(op, regs, imm=False):
    return "".join(f'"{op} {"$1," if imm else ""}{SRC},%%{r}\\n"' for r in regs)


def mem(op, regs):  # loads from a 16-byte aligned buffer
    return "".join(f'"{op} {16 * i}(%0),%%{r}\\n"' for i, r in enumerate(regs))


def stores(op):
    return "".join(f'"{op} %%xmm{i},{16 * i}(%0)\\n"' for i in range(8))


def copies(regs):
    return "".join(f'"movapd {SRC},%%{r}\\n"' for r in regs)


TESTS = [  # name, body, instructions per iteration
    ("addpd", ops("addpd", A), 8),
    ("mulpd", ops("mulpd", A), 8),
    ("shufpd", ops("shufpd", A, True), 8),
    ("shufps", ops("shufps", A, True), 8),
    ("unpcklps", ops("unpcklps", A), 8),
    ("cvtps2pd", ops("cvtps2pd", A), 8),
    ("cvtpd2ps", ops("cvtpd2ps", A), 8),
    ("load movupd", mem("movupd", A), 8),
    ("store movupd", stores("movupd"), 8),
    ("store movhpd", stores("movhpd"), 8),
    ("addpd + mulpd", ops("addpd", A) + ops("mulpd", B), 15),
    ("addpd + shufpd", ops("addpd", A) + ops("shufpd", B, True), 15),
    ("addpd + cvtps2pd", ops("addpd", A) + ops("cvtps2pd", B), 15),
    ("mulpd + cvtpd2ps", ops("mulpd", A) + ops("cvtpd2ps", B), 15),
    ("addpd + load", ops("addpd", A) + mem("movupd", B), 15),
    ("mix: 4 add 4 mul 7 shuf 8 copy", ops("addpd", A[:4]) + ops("mulpd", A[4:]) + ops("shufpd", B, True) + copies(A), 23),
]

PROGRAM = r"""
#include <stdio.h>
#include <time.h>
static double now(void) { struct timespec t; clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t); return t.tv_sec + t.tv_nsec * 1e-9; }
static double buf[128] __attribute__((aligned(64)));
#define CLOBBER "xmm0","xmm1","xmm2","xmm3","xmm4","xmm5","xmm6","xmm7","xmm8","xmm9","xmm10","xmm11","xmm12","xmm13","xmm14","xmm15","memory"
static double best(double (*f)(void)) { double b = 1e9; for (int r = 0; r < 5; ++r) { double t = f(); if (t < b) b = t; } return b; }
static double clockChain(void) {
    long n = 20000000; double t0 = now();
    for (long i = 0; i < n; ++i) __asm__ volatile(
        "add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n"
        "add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n add $1,%%rax\n" ::: "rax");
    return (now() - t0) / (n * 16.0);
}
%TESTS%
int main(void) {
    const double cycle = best(clockChain);
    printf("clock %.2f GHz (one dependent integer add per cycle)\n", 1e-9 / cycle);
%CALLS%
    return 0;
}
"""


def main():
    defs, calls = "", ""
    for i, (name, body, count) in enumerate(TESTS):
        defs += (f"static double t{i}(void) {{ long n = 5000000; double t0 = now();\n"
                 f"  for (long i = 0; i < n; ++i) __asm__ volatile({body} :: \"r\"(buf) : CLOBBER);\n"
                 f"  return (now() - t0) / (n * {count}.0); }}\n")
        calls += f'    printf("%-34s %.2f per cycle\\n", "{name}", cycle / best(t{i}));\n'
    with tempfile.TemporaryDirectory() as d:
        src, exe = os.path.join(d, "pipes.c"), os.path.join(d, "pipes")
        with open(src, "w") as f:
            f.write(PROGRAM.replace("%TESTS%", defs).replace("%CALLS%", calls))
        subprocess.run(["cc", "-O2", "-o", exe, src], check=True)
        subprocess.run([exe], check=True)


if __name__ == "__main__":
    main()
