#!/usr/bin/env python3
"""fault_test.py BUILD EXAMPLES [--full] [--jobs N] [SCENARIO...]

Makes calls of the system fail in the scenarios; first in a program that makes mistakes, each of which must be seen.
The short form takes one fault of a kind for each operation on the scenario's files, --full all faults of all calls.
"""
import argparse
import os
import re
import sys
from concurrent.futures import ThreadPoolExecutor

from fault_runs import Folder, Judge, Scenario
from fault_scenarios import OTHERS, scenarios

# The mistakes of careless.cpp with what is said of them.
MISTAKES = {
    "none": None,
    "ignoring": "write .* is neither the old nor the new one",
    "impatient": "EINTR .* is seen",
    "trusting": "short:1 .* is seen",
    "in_place": "kill .* is neither the old nor the new one",
    "untidy": r"write .* file\.new is left",
    "mute": "names neither file nor operation",
    "misleading": "gives a reason that is not so",
    "crashing": "ended by signal 6",
    "waiting": "hangs",
    "retrying": r"ENOSPC at call \d+\+, write .* repeats calls that fail",
    "stuck": "kill .* the next run fails",
}


def problems_of(tracer, scenario, is_full):
    """The number of runs, and what is wrong."""
    judge = Judge(Folder(tracer), scenario)
    runs = 0
    problems = []
    for fault, number in judge.faults():
        if not is_full and not judge.is_of_short_form(fault, number):
            continue
        runs += 1
        problem = judge.problem_of(fault, number)
        if problem is not None:
            problems.append(f"{judge.describe(fault, number)}: {problem}")
    return runs, problems


def unseen_mistakes(build, tracer):
    """The mistakes that the checks do not report, and what they report without one."""
    unseen = []
    for mistake, expected in MISTAKES.items():
        scenario = Scenario(mistake, [f"{build}/tests/careless", mistake, "file"], {"file": b"o" * 1000},
                            messages="file cannot be written", timeout=2 if mistake == "waiting" else 20)
        runs, problems = problems_of(tracer, scenario, mistake != "waiting")
        if runs == 0 or (expected is None and problems):
            unseen.append(f"{mistake}: {runs} runs, {problems}")
        elif expected is not None and not any(re.search(expected, problem) for problem in problems):
            unseen.append(f"{mistake} is not seen, but {problems}")
    return unseen


def registered_file(build, tracer):
    """A registry file with the module's entries and those of others."""
    folder = Folder(tracer)
    scenario = Scenario("", [f"{build}/bin/mirolta-host", "--register", f"{build}/lib/libMirolta.so"],
                        {"registry.reg": OTHERS}, {"MIROLTA_REGISTRY": "FOLDER/registry.reg"})
    folder.clear(scenario.files)
    folder.run(scenario, None)
    return (folder.work / "registry.reg").read_bytes()


def main():
    """Prints what is wrong; the exit status says whether anything is."""
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("examples")
    parser.add_argument("scenario", nargs="*")
    parser.add_argument("--full", action="store_true")
    parser.add_argument("--jobs", type=int, default=1)
    words = parser.parse_args()
    words.build, words.examples = os.path.abspath(words.build), os.path.abspath(words.examples)
    tracer = f"{words.build}/tests/call_tracer"
    wrong = unseen_mistakes(words.build, tracer)
    print(f"{len(MISTAKES) - 1} mistakes, {len(wrong)} unseen", *wrong, sep="\n", flush=True)

    def try_one(scenario):
        runs, problems = problems_of(tracer, scenario, words.full)
        print(f"{scenario.name}: {runs} runs, {len(problems)} wrong", *problems, sep="\n", flush=True)
        return problems if runs else ["no runs"]

    chosen = [scenario for scenario in scenarios(words.build, words.examples, registered_file(words.build, tracer))
              if not words.scenario or scenario.name in words.scenario]
    with ThreadPoolExecutor(words.jobs) as pool:
        wrong += sum(pool.map(try_one, chosen), [])
    return 1 if wrong or not chosen else 0


if __name__ == "__main__":
    sys.exit(main())
