"""The table of a run."""

from . import answers as reasons
from . import sample

COLUMNS = ("mutants", "found", "timed out", "equivalent", "answered", "survived", "score", "compiler")


def classify(rows, mutants, answers):
    """classify returns {folder: counts} and the survivors, of the rows that still fit the sources."""
    counts = {folder: dict.fromkeys(COLUMNS, 0) for folder in sample.FOLDERS}
    survivors, answered = [], []
    for key, row in rows.items():
        mutant = mutants.get(key)
        if mutant is None or row["status"] == "invalid":
            continue
        count = counts[mutant.folder]
        status = row["status"]
        if status == "compiler":
            count["compiler"] += 1
            continue
        count["mutants"] += 1
        if status == "survived":
            why = reasons.reason(answers, mutant)
            if why:
                status = "answered"
                answered.append((mutant, why))
            else:
                survivors.append(mutant)
        count[status] += 1
    return counts, survivors, answered


def score(count):
    """score is the part found of all that were tried, in per cent; a reason finds nothing."""
    found = count["found"] + count["timed out"]
    tried = found + count["survived"] + count["answered"]
    return 100.0 * found / tried if tried else 100.0


def text(counts, survivors, rows):
    total = dict.fromkeys(COLUMNS, 0)
    lines = [f"{'folder':18}" + "".join(f"{c:>11}" for c in COLUMNS)]
    for folder, count in list(counts.items()) + [("all", total)]:
        count["score"] = f"{score(count):.1f} %"
        lines.append(f"{folder:18}" + "".join(f"{count[c]:>11}" for c in COLUMNS))
        if count is not total:
            for column in COLUMNS:
                if column != "score":
                    total[column] += count[column]
    cpu = [row["cpu"] for row in rows.values() if row["status"] != "invalid"]
    lines.append(f"{sum(cpu) / max(1, len(cpu)):.1f} s of processor time a mutant")
    for mutant in sorted(survivors, key=lambda m: (m.path, m.line)):
        lines += ["", f"{mutant.path}:{mutant.line}: {mutant.operator}: {mutant.old} -> {mutant.new}"
                  if len(mutant.old) < 60 else f"{mutant.path}:{mutant.line}: {mutant.operator}",
                  "  - " + mutant.old_lines, "  + " + mutant.new_lines]
    return "\n".join(lines), score(total)
