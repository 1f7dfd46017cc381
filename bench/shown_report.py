"""Rows for what it costs a program to be shown elsewhere."""

import os
import socket
import struct
import subprocess
import tempfile
import time

SERIES = 7
FRAMES = 90
RATE = 30  # frames a second
HEADER = struct.Struct("=cQ")
COMMAND = b"c"
FRAME = b"p"
DONE = b"d"
REFUSED = b"r"


def rows(program, libraries, environment, shown_time):
    """A program without a device, on a device that nobody watches, and on one that is watched."""
    def run(device, *arguments):
        return float(subprocess.run([program, *arguments], check=True, text=True, env=device,
                                    stdout=subprocess.PIPE).stdout)

    with tempfile.TemporaryDirectory() as root:
        device = environment | {"LD_PRELOAD": ":".join(libraries), "TAVSIM_CONTROL": "1",
                                "TAVSIM_ROOT": root}
        bare, unwatched = (min(times) for times in
                           zip(*((run(environment), run(device)) for _ in range(SERIES))))
        yield (["frame of 480 x 800, on a device that nobody watches", shown_time(unwatched),
                shown_time(bare), f"{unwatched / bare:.3f}", "at most 1.01"],
               unwatched <= 1.01 * bare)
        watched, frames = watched_run([program, str(FRAMES)], device, f"{root}/control")
    share = watched * RATE / 1e9
    yield ([f"the same watched, {RATE} a second, of one core", f"{100 * share:.1f} %", "", "",
            "below 15 %"], share < 0.15)
    yield ([f"frames of {FRAMES} that the watcher gets", str(frames), "", "",
            f"at least {FRAMES * 9 // 10}"], frames >= FRAMES * 9 // 10)


def watched_run(command, environment, address):
    """What the program prints, and how many frames came."""
    with subprocess.Popen(command, env=environment, stdout=subprocess.PIPE, text=True) as program:
        frames = count_frames(address, program)
        return float(program.stdout.read()), frames


def count_frames(address, program):
    """Asks for one frame after the other until the program ends."""
    while not os.path.exists(address) and program.poll() is None:
        time.sleep(0.01)
    frames = 0
    with socket.socket(socket.AF_UNIX) as device:
        device.connect(address)
        try:
            while True:
                device.sendall(HEADER.pack(COMMAND, len(b"frame")) + b"frame")
                kind = b""
                while kind not in (DONE, REFUSED):
                    kind, length = HEADER.unpack(received(device, HEADER.size))
                    received(device, length)
                    frames += kind == FRAME
        except (ConnectionError, EOFError):
            return frames


def received(device, length):
    content = bytearray(length)
    rest = memoryview(content)
    while rest:
        taken = device.recv_into(rest)
        if taken == 0:
            raise EOFError
        rest = rest[taken:]
    return content
