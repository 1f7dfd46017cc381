"""What the library costs on today's Linux: rows for the table of report.py. Needs a session bus of
its own, which dbus-run-session starts for each program."""

import json
import os
import subprocess
import sys
import tempfile
import time

STARTS = 41  # of each of the two programs, in turn
MOST_CALL = 1.15
MOST_WAITING = 1.1


def on_fresh_bus(command, environment):
    """The output of a program that has a session bus to itself, and no system bus."""
    with tempfile.TemporaryDirectory() as folder:
        environment = environment | {"XDG_RUNTIME_DIR": folder,
                                     "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={folder}/none"}
        return subprocess.run(["dbus-run-session", "--", *command], check=True, text=True,
                              env=environment, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL).stdout


def call(program, way, environment):
    """Real and processor time of one call."""
    printed = on_fresh_bus([program, f"--benchmark_filter={way}", "--benchmark_min_time=0.1",
                            "--benchmark_format=json"], environment)
    (entry,) = json.loads(printed)["benchmarks"]
    if entry.get("error_occurred"):
        sys.exit(f"bench: {entry['name']}: {entry['error_message']}")
    return entry["real_time"], entry["cpu_time"]


def call_rows(program, rounds, environment, shown_time):
    times = [[call(program, way, environment) for way in ("Libtav", "Gdbus")]
             for _ in range(rounds)]
    for index, kind in enumerate(("", ", processor time")):
        ours, beside = ([each[n][index] for each in times] for n in (0, 1))
        ratio = min(ours) / min(beside)  # other load only adds to a time
        bound = f"at most {MOST_CALL}" if index == 0 else ""
        yield ([f"call of a D-Bus service and reply, beside GDBus{kind}",
                shown_time(min(ours)), shown_time(min(beside)),
                f"{ratio:.3f}", bound], not bound or ratio <= MOST_CALL)


def start(program, environment):
    """The running time of a program in milliseconds, and the memory that it reports."""
    before = time.perf_counter()
    printed = subprocess.run([program], check=True, stdout=subprocess.PIPE, env=environment).stdout
    return {"ms": (time.perf_counter() - before) * 1e3} | json.loads(printed)


def start_rows(programs, environment):
    starts = [[start(program, environment) for program in programs] for _ in range(STARTS)]
    for key, unit, what in (("ms", ".1f} ms", "start and end of an application on Linux"),
                            ("resident_kib", ".0f} KiB", "its resident memory"),
                            ("unshared_kib", ".0f} KiB", "of that not shared")):
        show = ("{:" + unit).format
        ours, beside = (min(each[n][key] for each in starts) for n in (0, 1))
        yield [f"{what}, beside the same without libtav", show(ours), show(beside),
               "+" + show(ours - beside), ""], True


def idle_rows(program, environment):
    counts = json.loads(on_fresh_bus([program], environment))
    yield (["wake-ups in a second while nothing happens", str(counts["asleep"]), "", "",
            "at most 0"], counts["asleep"] == 0)
    ratio = counts["waiting"] / counts["waiting_plain"]
    yield (["wake-ups in a second in SDL_WaitEvent, beside SDL's own", str(counts["waiting"]),
            str(counts["waiting_plain"]), f"{ratio:.3f}", f"at most {MOST_WAITING}"],
           ratio <= MOST_WAITING)


def rows(build, rounds, environment, shown_time):
    programs = f"{build}/bin/tav_linux_"
    if not os.path.exists(programs + "calls"):
        return
    yield from call_rows(programs + "calls", rounds, environment, shown_time)
    yield from start_rows((programs + "start", programs + "start_bare"), environment)
    yield from idle_rows(programs + "idle", environment)
