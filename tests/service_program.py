"""A service program whose requests tell it what to do, misbehaviour included."""

import json
import os
import sys
import time

heard = []


def say(**members):
    print(json.dumps(members), flush=True)


def misbehave(what, request):
    if what == "print garbage":
        print("no JSON", flush=True)
    elif what == "answer nobody":
        say(id=request + 1, reply=1)
    elif what == "misspell":
        say(id=request, replay=1)
    elif what == "say too much at once":
        say(id=request, reply="x" * (3 << 19))
    elif what == "reply without end":
        while True:
            say(id=request, reply=1, delay=1, more=True)
    elif what == "exit":
        sys.exit(3)
    elif what == "close its output":
        os.close(1)
        while True:
            time.sleep(1)
    elif what == "leave a child that holds its output":
        if os.fork():
            sys.exit(4)
        while True:
            time.sleep(1)
    elif what == "stay on":
        say(id=request)
        while True:
            time.sleep(1)


for line in sys.stdin:
    request = json.loads(line)
    heard.append(request)
    payload = request.get("payload")
    if isinstance(payload, dict) and "do" in payload:
        misbehave(payload["do"], request["id"])
    elif payload == "what have you heard":
        say(id=request["id"], reply=heard[:-1])
    elif payload == "count":
        for number in range(2):
            say(id=request["id"], reply=[request["turn"], number], delay=5 * number, more=True)
        say(id=request["id"], again=100)
    elif payload == "later":
        say(id=request["id"], reply="at once", more=True)
        time.sleep(0.01)
        say(id=request["id"], reply="later")
    elif "cancel" not in request:
        say(id=request["id"], reply=payload, delay=20)
