"""The table of a run: how many mutants of each folder the tests found."""

from . import answers as reasons
from . import sample

COLUMNS = ("mutants", "found", "timed out", "equivalent", "answered", "survived", "score", "compiler")


def classify(rows, mutants, answers):
    """classify counts the rows that still fit the sources.

    rows: {key: row}, as Trial.run makes them; mutants: {key: Mutant} of the sources as they are;
    answers: as answers.read returns them. Returns ({folder: {column: count}}, the survivors without
    a reason, [(mutant, reason)] of those with one). Invalid mutants do not count.
    """
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
    """score returns the per cent found of the mutants tried, 100 if there are none.

    A mutant that times out counts as found; one with a reason does not.
    """
    found = count["found"] + count["timed out"]
    tried = found + count["survived"] + count["answered"]
    return 100.0 * found / tried if tried else 100.0


def text(counts, survivors, rows):
    """text returns the report, the table and then each survivor as a diff, and the whole score.

    The score is in per cent. Adds each folder's score to counts.
    """
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
