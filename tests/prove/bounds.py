#!/usr/bin/env python3
"""Proves bounds of the arithmetic by z3, with the constants of the code.

  bounds.py CONSTANTS...     programs of constants.cpp, one for each width of limbs

A problem states facts and a claim; z3 must find no values for which the facts hold and the claim does not. Each
problem has a fault, one fact changed, with which z3 must find such values.
"""
import subprocess
import sys


class Problem:
    """Facts and a claim over variables of one sort, as SMT-LIB terms."""

    def __init__(self, name, logic, sort, variables, facts, claim, fault):
        self.name, self.logic, self.sort = name, logic, sort
        self.variables, self.facts, self.claim = variables.split(), facts, claim
        self.fault = fault  # (fact, what replaces it)
        assert fault[0] in facts or fault[0] == claim, name

    def text(self, is_faulty):
        def changed(term):
            return self.fault[1] if is_faulty and term == self.fault[0] else term

        lines = [f"(set-logic {self.logic})"]
        lines += [f"(declare-const {name} {self.sort})" for name in self.variables]
        lines += [f"(assert {changed(fact)})" for fact in self.facts]
        return "\n".join([*lines, f"(assert (not {changed(self.claim)}))", "(check-sat)", "(reset)"])


def answers_of(texts):
    """z3's lines, one for each text; errors are lines too. Each text has a minute."""
    said = subprocess.run(["z3", "-in", "-t:60000"], input="\n".join(texts), capture_output=True, text=True,
                          check=False)
    return said.stdout.splitlines()


def within(name, most):
    return f"(and (<= 0 {name}) (<= {name} {most}))"


def product_problems(bits):
    base = 2 ** bits
    half = 2 ** (bits // 2)
    most = base - 1
    yield Problem(
        f"{bits}: a * b + c + d fits two limbs", "QF_NRA", "Real", "a b c d",
        [within(name, most) for name in "abcd"], f"(<= (+ (* a b) c d) {base * base - 1})",
        (within("d", most), within("d", base)))
    halves = "a0 a1 b0 b1 c0 c1 d0 d1"
    fits = [within(name, half - 1) for name in halves.split()]
    for name, parts in (("lowest", "(* a0 b0) c0 d0"), ("middle", "(* a1 b0) l1 c1"),
                        ("second middle", "(* a0 b1) m0 d1"), ("highest", "(* a1 b1) m1 n1")):
        yield Problem(
            f"{bits}: the {name} sum of half products fits a limb", "QF_NRA", "Real", halves + " l1 m0 m1 n1",
            fits + [within(part, half - 1) for part in ("l1", "m0", "m1", "n1")],
            f"(<= (+ {parts}) {most})", (f"(<= (+ {parts}) {most})", f"(<= (+ {parts}) {most - 1})"))
    low, mid = "(+ (* a0 b0) c0 d0)", "(+ (* a1 b0) l1 c1)"
    second, high = "(+ (* a0 b1) m0 d1)", "(+ (* a1 b1) m1 n1)"
    claim = (f"(= (+ (* {base} {high}) (* {half} n0) l0) (+ (* (+ (* {half} a1) a0) (+ (* {half} b1) b0)) "
             f"(* {half} c1) c0 (* {half} d1) d0))")
    carried = f"(= {mid} (+ (* {half} m1) m0))"
    yield Problem(
        f"{bits}: half products make the product", "QF_NRA", "Real", halves + " l0 l1 m0 m1 n0 n1",
        [f"(= {low} (+ (* {half} l1) l0))", carried, f"(= {second} (+ (* {half} n1) n0))"], claim,
        (carried, f"(= {mid} (+ (* {half} m1) m0 1))"))


def montgomery_problems(bits):
    for limbs in (1, 2, 8, 64):
        power = 2 ** (bits * limbs)
        below = f"(< t (* {power} m))"
        yield Problem(
            f"{bits}: Montgomery reduction of {limbs} limbs is below 2 m", "QF_LIA", "Int", "t m um",
            ["(> m 0)", "(<= 0 t)", below, "(<= 0 um)", f"(<= um (* {power - 1} m))"],
            f"(< (+ t um) (* {2 * power} m))", (below, f"(<= t (* {power + 1} m))"))
    # So one subtraction of m is enough, and the sum has at most one carry above its limbs.
    yield Problem(
        f"{bits}: a Montgomery sum below 2 m has a carry of one bit", "QF_LIA", "Int", "z m",
        [f"(< 0 m {2 ** bits})", "(<= 0 z)", "(< z (* 2 m))"], f"(< z {2 * 2 ** bits})",
        ("(< z (* 2 m))", "(< z (* 3 m))"))


def quotient_problems(bits):
    """Moeller and Granlund 2011: with B r written by the reciprocal's error e, r is the candidate remainder, which
    one masked and one rare correction bring below d."""
    base = 2 ** bits
    yield Problem(
        f"{bits}: the remainder of the quotient limb estimated by two", "QF_NRA", "Real", "u1 u0 d v q1",
        [], f"(= (* {base} (- (+ (* {base} u1) u0) (* (+ q1 1) d)))"
        f" (- (+ (* u1 (- {base * base} (* (+ {base} v) d))) (* u0 (- {base} d))"
        f" (* d (- (+ (* (+ v {base}) u1) u0) (* {base} q1)))) (* {base} d)))",
        (f"(= (* {base} (- (+ (* {base} u1) u0) (* (+ q1 1) d)))"
         f" (- (+ (* u1 (- {base * base} (* (+ {base} v) d))) (* u0 (- {base} d))"
         f" (* d (- (+ (* (+ v {base}) u1) u0) (* {base} q1)))) (* {base} d)))",
         f"(= (* {base} (- (+ (* {base} u1) u0) (* q1 d))) (* {base} d))"))
    # x is u1 e, at most (d - 1) d; y is u0 (B - d); r is real here.
    normalised = f"(<= {base // 2} d)"
    facts = [normalised, f"(<= d {base - 1})", within("q0", base - 1), "(<= 0 x)", "(<= x (* (- d 1) d))", "(<= 0 y)",
             f"(<= y (* {base - 1} (- {base} d)))", f"(= (* {base} r) (- (+ x y (* d q0)) (* {base} d)))"]
    yield Problem(
        f"{bits}: the candidate remainder is below B - d or q0", "QF_NRA", "Real", "d q0 x y r", facts,
        f"(or (< r (- {base} d)) (< r q0))", (facts[4], f"(<= x (* {base} d))"))
    yield Problem(
        f"{bits}: the candidate remainder is at least -d, and where it is negative above q0 after wrapping", "QF_NRA",
        "Real", "d q0 x y r", facts, f"(and (>= r (- d)) (=> (< r 0) (> (+ r {base}) q0)))",
        (facts[3], "(<= (- d) x)"))


def radix52_problems(constants):
    bits, mask = constants["radix52_bits"], constants["radix52_mask"]
    steps = constants["radix52_per_vector"] * constants["radix52_most_vectors"]
    terms = "(<= t (* 4 steps most))"
    yield Problem(
        "52: the sums of a digit stay below 2^63", "QF_NIA", "Int", "t steps most",
        [f"(= steps {steps})", f"(= most {mask})", terms], f"(< t {2 ** 63})",
        (f"(= steps {steps})", f"(= steps {4 * steps})"))

    def number(value):
        return f"(_ bv{value} 64)"

    def shifted(value):
        return f"(bvlshr {value} {number(bits)})"

    total = f"(bvadd (bvand t {number(mask)}) {shifted('below')} carry)"
    yield Problem(
        "52: after one pass a digit and the carry below it carry at most 1", "QF_BV", "(_ BitVec 64)", "t below carry",
        [f"(bvult t {number(2 ** 63)})", f"(bvult below {number(2 ** 63)})", f"(bvule carry {number(1)})"],
        f"(bvule {shifted(total)} {number(1)})",
        (f"(bvule carry {number(1)})", f"(bvule carry {number(2 ** bits + 1)})"))
    total = f"(bvadd (bvand t {number(mask)}) {shifted('below')})"
    yield Problem(
        "52: a digit that is over the mask is not full after a carry", "QF_BV", "(_ BitVec 64)", "t below",
        [f"(bvult t {number(2 ** 63)})", f"(bvult below {number(2 ** 63)})", f"(bvugt {total} {number(mask)})"],
        f"(not (= (bvand {total} {number(mask)}) {number(mask)}))",
        (f"(bvugt {total} {number(mask)})", f"(bvuge {total} {number(mask)})"))
    # Of the digits' carries c: digit i + 1 gets one if digit i generates one, or propagates the one that it gets.
    got, one = f"(bvor (bvshl over {number(1)}) in)", number(1)
    disjoint = f"(= (bvand over full) {number(0)})"
    facts = [disjoint, f"(bvule in {one})",
             f"(= c (bvor (bvshl (bvor over (bvand full c)) {one}) in))"]
    yield Problem(
        "52: carries ripple through a word of digits", "QF_BV", "(_ BitVec 64)", "over full in c", facts,
        f"(= (bvxor (bvadd {got} full) full) c)", (disjoint, "true"))
    yield Problem(
        "52: the carry out of a word of digits", "QF_BV", "(_ BitVec 64)", "over full in c", facts,
        f"(= (bvor (bvlshr over {number(63)}) (ite (bvult (bvadd {got} full) {got}) {one} {number(0)}))"
        f" (bvlshr (bvor over (bvand full c)) {number(63)}))", (facts[2], "true"))
    # The quotient digits but the last, u, count for u times the inverse m is multiplied by, below 2^52, or 2^104 for
    # two digits, which three follow; the last one counts once: together for less than 2 r.
    small = f"(<= (* {2 ** constants['radix52_spare']} m) r)"
    facts = ["(> m 0)", small, "(<= 0 x)", "(< x (* 3 m))", "(<= 0 y)", "(< y (* 3 m))", "(<= 0 u)", "(< u (* 2 r))"]
    yield Problem(
        "52: almost Montgomery products of numbers below 3 m are below 3 m", "QF_NRA", "Real", "x y m r u", facts,
        "(< (+ (* x y) (* u m)) (* 3 m r))", (small, "(<= (* 8 m) r)"))
    last = f"(<= l {mask})"
    yield Problem(
        "52: almost Montgomery products of numbers below 3 m with one are below 2 m", "QF_NRA", "Real", "x v k l p",
        # x and the result in units of m, r = 2^52 v; p counts for the quotients of two digits, each below 2^208 and
        # with three digits after it.
        ["(<= 0 x)", "(< x 3)", "(>= v 1)", "(<= 0 k)", f"(<= k {mask})", "(<= 0 l)", last, "(<= 0 p)", "(< p v)"],
        f"(< (+ x p (* k (- v 1)) (* l v)) (* {2 * 2 ** bits} v))", (last, f"(<= l {2 * mask})"))


def radix27_problems(constants):
    bits, mask, more = (constants[f"radix27_{name}"] for name in ("bits", "mask", "more"))
    digits = f"(= n {constants['radix27_most_digits']})"
    carry = 2 ** (64 - bits)  # passed to a lane at most once
    yield Problem(
        "27: the sums of a digit stay below 2^64", "QF_NIA", "Int", "t n most",
        [digits, f"(= most {mask + more})", f"(<= t (+ (* 2 n most most) {carry}))"], f"(< t {2 ** 64})",
        (digits, f"(= n {2 * constants['radix27_most_digits']})"))

    def number(value):
        return f"(_ bv{value} 64)"

    def passed(x, below):
        return f"(bvadd (bvand {x} {number(mask)}) (bvlshr {below} {number(bits)}))"

    first = f"(= c {passed('a', 'b')})"
    yield Problem(
        "27: two passes of carries leave little above a digit's bits", "QF_BV", "(_ BitVec 64)", "a b c d", [first],
        f"(bvule {passed('d', 'c')} {number(mask + more)})", (first, "true"))
    # The multiple is below k = 2^108 m; the quotient's digits are a number below r.
    small = f"(<= (* {2 ** (constants['radix27_spare'] - constants['radix27_block_bits'])} k) r)"
    facts = ["(> k 0)", small, "(<= 0 x)", "(< x (* 2 k))", "(<= 0 y)", "(< y (* 2 k))", "(<= 0 u)", "(< u r)"]
    yield Problem(
        "27: products of numbers below twice the multiple's bound are below it too", "QF_NRA", "Real", "x y k r u",
        facts, "(< (+ (* x y) (* u k)) (* 2 k r))", (small, "(<= (* 2 k) r)"))


def four_limbs_problems(constants):
    base = 2 ** constants["limb_bits"]
    # With t before a step, limb x of the factor and quotient limb q.
    facts = ["(> m 0)", "(<= 0 y)", "(< y m)", "(<= 0 x)", "(<= 0 q)", f"(<= q {base - 1})"]
    any_limb = f"(<= x {base - 1})"
    yield Problem(
        "64: two steps modulo the multiple and one modulo m leave a sum of four limbs of at most 3 m", "QF_NRA", "Real",
        "t x y q m", [*facts, any_limb, f"(<= t (* {base + 1} m))"], f"(<= (+ t (* x y) (* q m)) (* {3 * base} m))",
        (any_limb, f"(<= x {2 * base})"))
    top = f"(<= x {constants['four_limbs_most_top']})"
    yield Problem(
        "64: the last step leaves a sum of four limbs below 2 m", "QF_NRA", "Real", "t x y q m",
        [*facts, top, "(<= t (* 3 m))"], f"(< (+ t (* x y) (* q m)) (* {2 * base} m))", (top, any_limb))


def decimal_problems(constants):
    bits, digits, power = (constants[name] for name in ("limb_bits", "decimal_digits", "decimal_power"))
    base = 2 ** bits
    exact = f"(= p {power})"
    yield Problem(
        f"{bits}: a chunk is the most digits that fit a limb", "QF_LIA", "Int", "p",
        [exact], f"(and (= p {10 ** digits}) (< p {base}) (>= (* 10 p) {base}))", (exact, f"(= p {power // 10})"))
    # The room is n plus a part of n: if it is enough up to that part, each further part adds as much as it needs.
    room = constants["chunks_room"]
    part = next(n for n in range(1, len(room)) if room[n] - room[0] > n)
    for n in range(2 * part + 1):
        exact = f"(= chunks {power ** room[n]})"
        yield Problem(
            f"{bits}: {room[n]} chunks hold {n} limbs", "QF_LIA", "Int", "x chunks", [f"(< x {base ** n})", exact],
            "(< x chunks)", (exact, f"(= chunks {power ** max(room[n] - 2, 0) - 1})"))
    exact = f"(= more {room[2 * part] - room[part]})"
    yield Problem(
        f"{bits}: each {part} limbs more get {part + 1} chunks more, which hold them", "QF_LIA", "Int", "more",
        [exact], f"(and (= more {part + 1}) (<= {base ** part} {power ** (part + 1)}))", (exact, f"(= more {part})"))
    # The fraction of a leaf exceeds (x + 1/2) / D by less than a tenth of 1 / D, and each of its c truncations takes
    # less than 1 / B of it.
    most = constants["chunks_out"]
    for chunks in range(most // 2, most + 1):
        error = f"(= error (/ {power ** (2 * chunks)}.0 {base ** (2 * chunks)}.0))"
        lost = f"(< lost (/ {chunks}.0 {base}.0))"
        yield Problem(
            f"{bits}: the fraction of {chunks} chunks is between x / D and (x + 1) / D", "QF_LRA", "Real", "error lost",
            [error, "(<= 0 lost)", lost], "(and (< error 0.1) (< (+ 0.5 error) 1.0) (> (- 0.5 lost) 0.0))",
            (error, f"(= error (/ {base}.0 {power}.0))"))


def problems(constants):
    bits = constants["limb_bits"]
    yield from product_problems(bits)
    yield from montgomery_problems(bits)
    yield from quotient_problems(bits)
    yield from decimal_problems(constants)
    if "radix52_bits" in constants:
        yield from radix52_problems(constants)
        yield from radix27_problems(constants)
        yield from four_limbs_problems(constants)


def constants_of(program):
    constants = {"chunks_room": []}
    for line in subprocess.run([program], capture_output=True, text=True, check=True).stdout.splitlines():
        name, value = line.split()
        if name == "chunks_room":
            constants[name].append(int(value))
        else:
            constants[name] = int(value)
    return constants


def main(programs):
    tried = [problem for program in programs for problem in problems(constants_of(program))]
    answers = answers_of(problem.text(is_faulty) for problem in tried for is_faulty in (False, True))
    if len(answers) != 2 * len(tried):
        print("\n".join(answers))
        sys.exit(f"FAILED: {len(answers)} answers of {2 * len(tried)}")
    failed = 0
    for problem, answer, with_fault in zip(tried, answers[::2], answers[1::2]):
        if (answer, with_fault) != ("unsat", "sat"):
            failed += 1
            print(f"FAILED: {problem.name}: {answer}, with its fault {with_fault}")
    print(f"{len(tried) - failed} problems proved, each refuted with its fault; {failed} failed")
    return 1 if failed or not tried else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
