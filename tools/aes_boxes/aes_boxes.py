#!/usr/bin/env python3
"""Writes cipher/kernels/aes_boxes.inc: the S-box of AES and its inverse as circuits.

usage: aes_boxes.py >cipher/kernels/aes_boxes.inc

The forward circuit is the straight-line program of Boyar and Peralta, A New Combinational Logic Minimization
Technique with Applications to Cryptology (SEA 2010), without its four complements. The inverse has the same
nonlinear part between other linear maps, for which circuits are searched by the heuristic of the same paper:
the next gate is the one that brings the wanted sums nearest, and equal ones are chosen at random. The order of
the gates is searched too: it needs few values at a time. Both circuits are compared with the S-box for every byte.
"""
import itertools
import math
import random
import sys

# Bits are numbered from the lowest here, from the highest in the paper: x0 is bit 7.
TOP = """y14=x3^x5 y13=x0^x6 y9=x0^x3 y8=x0^x5 t0=x1^x2 y1=t0^x7 y4=y1^x3 y12=y13^y14 y2=y1^x0 y5=y1^x6
y3=y5^y8 t1=x4^y12 y15=t1^x5 y20=t1^x1 y6=y15^x7 y10=y15^t0 y11=y20^y9 y7=x7^y11 y17=y10^y11 y19=y10^y8
y16=t0^y11 y21=y13^y16 y18=x0^y16"""
MIDDLE = """t2=y12&y15 t3=y3&y6 t4=t3^t2 t5=y4&y0 t6=t5^t2 t7=y13&y16 t8=y5&y1 t9=t8^t7 t10=y2&y7 t11=t10^t7
t12=y9&y11 t13=y14&y17 t14=t13^t12 t15=y8&y10 t16=t15^t12 t17=t4^t14 t18=t6^t16 t19=t9^t14 t20=t11^t16
t21=t17^y20 t22=t18^y19 t23=t19^y21 t24=t20^y18 t25=t21^t22 t26=t21&t23 t27=t24^t26 t28=t25&t27 t29=t28^t22
t30=t23^t24 t31=t22^t26 t32=t31&t30 t33=t32^t24 t34=t23^t33 t35=t27^t33 t36=t24&t35 t37=t36^t34 t38=t27^t36
t39=t29&t38 t40=t25^t39 t41=t40^t37 t42=t29^t33 t43=t29^t40 t44=t33^t37 t45=t42^t41 z0=t44&y15 z1=t37&y6
z2=t33&y0 z3=t43&y16 z4=t40&y1 z5=t29&y7 z6=t42&y11 z7=t45&y17 z8=t41&y10 z9=t44&y12 z10=t37&y3 z11=t33&y4
z12=t43&y13 z13=t40&y5 z14=t29&y2 z15=t42&y9 z16=t45&y14 z17=t41&y8"""
BOTTOM = """t46=z15^z16 t47=z10^z11 t48=z5^z13 t49=z9^z10 t50=z2^z12 t51=z2^z5 t52=z7^z8 t53=z0^z3 t54=z6^z7
t55=z16^z17 t56=z12^t48 t57=t50^t53 t58=z4^t46 t59=z3^t54 t60=t46^t57 t61=z14^t57 t62=t52^t58 t63=t49^t58
t64=z4^t59 t65=t61^t62 t66=z1^t63 s0=t59^t63 s6=t56^t62 s7=t48^t60 t67=t64^t65 s3=t53^t66 s4=t51^t66
s5=t47^t65 s1=t64^s3 s2=t55^t67"""
MIDDLE_INPUTS = 22
MIDDLE_OUTPUTS = 18
INVERTED = 0x63
# Of ARMv7's NEON, less than which no processor with vectors of 128 bits but 32-bit x86 has.
REGISTERS = 16
LINEAR_TRIES = 40
ORDER_TRIES = 20000


def gates_of(text):
    """[(name, operation, operand, operand)]"""
    gates = []
    for gate in text.split():
        name, value = gate.split("=")
        operation = "&" if "&" in value else "^"
        gates.append((name, operation, *value.split(operation)))
    return gates


def run(gates, values):
    values = dict(values)
    for name, operation, a, b in gates:
        values[name] = values[a] & values[b] if operation == "&" else values[a] ^ values[b]
    return values


def inputs_of(byte):
    return {f"x{i}": byte >> (7 - i) & 1 for i in range(8)}


def apply(gates, byte):
    values = run(gates, inputs_of(byte))
    return sum(values[f"s{i}"] << (7 - i) for i in range(8))


def s_box():
    """FIPS-197, 5.1.1."""
    box, p, q = [INVERTED] * 256, 1, 1
    while True:
        p = p ^ (p << 1 & 0xFF) ^ (0x1B if p & 0x80 else 0)
        q ^= q << 1
        q ^= q << 2
        q ^= q << 4
        q &= 0xFF
        q ^= 0x09 if q & 0x80 else 0
        box[p] = q ^ INVERTED
        for turn in range(1, 5):
            box[p] ^= (q << turn | q >> (8 - turn)) & 0xFF
        if p == 1:
            return box


def affine(byte):
    """The linear map of the S-box."""
    return byte ^ sum_of_turns(byte)


def sum_of_turns(byte):
    value = 0
    for turn in range(1, 5):
        value ^= (byte << turn | byte >> (8 - turn)) & 0xFF
    return value


def distances(base):
    """For each of the 256 sums of the inputs, how many elements of the base make it."""
    reached = {0: 0}
    frontier = [0]
    while frontier:
        following = []
        for v in frontier:
            for b in base:
                if v ^ b not in reached:
                    reached[v ^ b] = reached[v] + 1
                    following.append(v ^ b)
        frontier = following
    return reached


def linear_circuit(targets, rng):
    """[(sum, part, part)] of XOR gates on eight inputs, 1 << i, that make all targets."""
    base = [1 << i for i in range(8)]
    gates = []
    wanted = {t for t in targets if t not in base}
    while wanted:
        best, choices = None, []
        for a, b in itertools.combinations(base, 2):
            new = a ^ b
            if new in base or new == 0:
                continue
            if new in wanted:
                best, choices = None, [(a, b)]
                break
            reached = distances(base + [new])
            steps = [reached[t] - 1 for t in wanted]
            score = (sum(steps), -sum(s * s for s in steps))
            if best is None or score < best:
                best, choices = score, []
            if score == best:
                choices.append((a, b))
        a, b = rng.choice(choices)
        base.append(a ^ b)
        gates.append((a ^ b, a, b))
        wanted.discard(a ^ b)
    return gates


def transposed(gates, columns):
    """The circuit that computes, from an input for each of the columns, the eight sums whose bit i is the sum
    of the inputs whose column has bit i: the circuit of the columns read from its outputs to its inputs."""
    terms = {1 << i: [] for i in range(8)}
    for value, _, _ in gates:
        terms[value] = []
    for i, column in enumerate(columns):
        terms[column].append(f"z{i}")
    made = []

    def total(names, prefix):
        while len(names) > 1:
            a, b = names.pop(0), names.pop(0)
            names.append(f"{prefix}{len(made)}")
            made.append((names[-1], "^", a, b))
        return names[0]

    for value, a, b in reversed(gates):
        name = total(terms[value], "b")
        terms[a].append(name)
        terms[b].append(name)
    return made, {i: total(terms[1 << i], "b") for i in range(8)}


def inverse_circuit(tries, rng):
    unaffine = {affine(v): v for v in range(256)}
    # The middle's input i is a sum of the bits of x: of those of A^-1(x) here.
    def column_of(function):
        rows = []
        for name in [f"y{i}" for i in range(MIDDLE_INPUTS)]:
            rows.append(sum(function(1 << bit)[name] << bit for bit in range(8)))
        return rows

    def top(byte):
        values = run(gates_of(TOP), inputs_of(unaffine[byte]))
        return {**values, "y0": values["x7"]}

    targets = column_of(top)
    # The outputs of the middle are added to A^-1 of what they are added to in the forward circuit.
    columns = []
    for i in range(MIDDLE_OUTPUTS):
        values = run(gates_of(BOTTOM), {f"z{j}": int(i == j) for j in range(MIDDLE_OUTPUTS)})
        columns.append(unaffine[sum(values[f"s{j}"] << (7 - j) for j in range(8))])
    tops = min((linear_circuit(targets, rng) for _ in range(tries)), key=len)
    bottoms = min((linear_circuit(columns, rng) for _ in range(tries)), key=len)

    names = {1 << bit: f"x{7 - bit}" for bit in range(8)}
    first = []
    for value, a, b in tops:
        names[value] = f"y{targets.index(value)}" if value in targets else f"a{len(first)}"
        first.append((names[value], "^", names[a], names[b]))
    alias = {f"y{i}": names[target] for i, target in enumerate(targets)}
    middle = [(n, o, alias.get(a, a), alias.get(b, b)) for n, o, a, b in gates_of(MIDDLE)]
    last, outputs = transposed(bottoms, columns)
    final = {name: f"s{7 - bit}" for bit, name in outputs.items()}
    last = [tuple(final.get(part, part) for part in gate) for gate in last]
    return first + middle + last


def memory_accesses(gates):
    """How many values a processor with REGISTERS registers stores and loads again, if it keeps what is needed
    soonest (Belady)."""
    uses = {}
    for i, (_, _, a, b) in enumerate(gates):
        uses.setdefault(a, []).append(i)
        uses.setdefault(b, []).append(i)
    for i in range(8):
        uses.setdefault(f"s{i}", []).append(len(gates))
    never = len(gates) + 1
    registers, stored, accesses = {f"x{i}" for i in range(8)}, set(), 0
    for i, (name, _, *parts) in enumerate(gates):
        accesses += len(set(parts) - registers)
        registers |= set(parts)
        next_use = {v: next((use for use in uses[v] if use > i), never) for v in registers}
        registers = {v for v in registers if next_use[v] != never}
        while len(registers) >= REGISTERS:
            farthest = max(sorted(registers), key=lambda v: (v not in parts, next_use[v], v in stored))
            registers.remove(farthest)
            accesses += farthest not in stored
            stored.add(farthest)
        registers.add(name)
    return accesses


def reordered(gates, tries, rng):
    """The same gates in an order that needs fewer memory accesses, by simulated annealing."""
    count = memory_accesses(gates)
    best, best_count = gates, count
    for step in range(tries):
        heat = 1.02 - step / tries
        at = rng.randrange(len(gates))
        gate = gates[at]
        first = max((i for i in range(at) if gates[i][0] in gate[2:]), default=-1) + 1
        last = min((i for i in range(at + 1, len(gates)) if gate[0] in gates[i][2:]), default=len(gates)) - 1
        changed = gates[:at] + gates[at + 1:]
        changed.insert(rng.randint(first, last), gate)
        changed_count = memory_accesses(changed)
        if changed_count <= count or rng.random() < math.exp((count - changed_count) / heat):
            gates, count = changed, changed_count
            if count < best_count:
                best, best_count = gates, count
    return best


def text_of(name, gates):
    operations = {"&": "And", "^": "Xor"}
    lines = [f"// {len(gates)} gates.", f"MIROLTA_AES_STEP void {name}(Vector (&x)[8]) {{"]
    for bit in range(8):
        lines.append(f"  const Vector x{bit} = x[{7 - bit}];")
    for gate, operation, a, b in gates:
        lines.append(f"  const Vector {gate} = {operations[operation]}({a}, {b});")
    for bit in range(8):
        lines.append(f"  x[{7 - bit}] = s{bit};")
    return "\n".join(lines + ["}"])


def main():
    box, rng = s_box(), random.Random(1)
    forward = [(n, o, "x7" if a == "y0" else a, "x7" if b == "y0" else b)
               for n, o, a, b in gates_of(TOP + " " + MIDDLE + " " + BOTTOM)]
    forward = reordered(forward, ORDER_TRIES, rng)
    inverse = reordered(inverse_circuit(LINEAR_TRIES, rng), ORDER_TRIES, rng)
    for byte in range(256):
        assert apply(forward, byte) ^ INVERTED == box[byte]
        assert apply(inverse, box[byte] ^ INVERTED) == byte
    print(f"""\
// The S-box of AES and its inverse as circuits, made by tools/aes_boxes.
// The including file has MIROLTA_AES_STEP, Vector, And and Xor. x[i] has bit i of each byte. SubBytes leaves
// out the S-box's sum with 0x63, and InvSubBytes takes bytes to which 0x63 has been added.
// Source: Boyar and Peralta, A New Combinational Logic Minimization Technique with Applications to Cryptology
// (SEA 2010).

{text_of("SubBytes", forward)}

{text_of("InvSubBytes", inverse)}""")
    for gates in forward, inverse:
        print(f"{len(gates)} gates, {memory_accesses(gates)} memory accesses", file=sys.stderr)


if __name__ == "__main__":
    main()
