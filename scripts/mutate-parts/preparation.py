"""Prepares a workplace: built, seen to pass without any change, and knowing which tests enter which function."""

import json

import reach
from workplace import ROOT, ToolError

SECONDS_OF_A_PROGRAM = 1800
FOLDER = ROOT / "build" / "mutate"
REACH_FILE = FOLDER / "reach.json"


def prepare(place, names, state, say):
    """Brings the workplace to the project's state; what was found out about this state before is not found out again."""
    place.take_project(names)
    if read_json(state_file(place)).get("state") == state:
        place.configure(tells_functions=False)
        place.start_wine()
        return
    state_file(place).unlink(missing_ok=True)
    is_first = place.folder.name == "1"
    if is_first and read_json(REACH_FILE).get("state") != state:
        trace_functions(place, state, say)
    say(f"workplace {place.folder.name}: building")
    place.configure(tells_functions=False)
    place.build_all()
    place.keep_unchanged()
    place.start_wine()
    milliseconds, left_out = {}, []
    for program in place.programs():
        say(f"workplace {place.folder.name}: {program} without a change")
        milliseconds[program], unsteady = run_unchanged(place, program)
        left_out += [(program, test) for test in unsteady]
    place.keep_prefix()
    write_json(state_file(place), {"state": state, "milliseconds": milliseconds, "left out": left_out})


def trace_functions(place, state, say):
    say(f"workplace {place.folder.name}: building with functions that tell when they are entered")
    place.configure(tells_functions=True)
    place.build_all()
    place.start_wine()
    entered = {}
    for program in place.programs():
        say(f"workplace {place.folder.name}: which functions {program} enters")
        trace = place.folder / "build" / "trace.txt"
        trace.unlink(missing_ok=True)
        # Whether all pass is not asked here: some look at what the DLL is made of.
        place.run(program, seconds=SECONDS_OF_A_PROGRAM, trace=trace, to_the_end=True)
        if not trace.exists():
            raise ToolError(f"{program} does not tell which functions it enters")
        entered[program] = reach.read_trace(place.folder, program, trace)
    write_json(REACH_FILE, {"state": state, "entered": entered})


def run_unchanged(place, program):
    """The milliseconds of each test, and the tests that failed once and passed when the program ran again."""
    run = place.run(program, seconds=SECONDS_OF_A_PROGRAM, to_the_end=True)
    if run.passed:
        return run.passed_milliseconds, []
    again = place.run(program, seconds=SECONDS_OF_A_PROGRAM, to_the_end=True)
    if not again.passed:
        (FOLDER / "failed.txt").write_text(again.output)
        raise ToolError(f"{program} fails without any change ({again.breaking_test}); see build/mutate/failed.txt")
    return again.passed_milliseconds, run.failed_tests


def findings(places):
    """What the workplaces found out, for their judges: a Reach, and the tests that fail by themselves."""
    states = [read_json(state_file(place)) for place in places]
    left_out = {tuple(test) for state in states for test in state["left out"]}
    return reach.Reach(read_json(REACH_FILE)["entered"], states[0]["milliseconds"]), left_out


def state_file(place):
    return place.folder / "build" / "state.json"


def read_json(path):
    return json.loads(path.read_text()) if path.exists() else {}


def write_json(path, value):
    path.write_text(json.dumps(value, indent=1))
