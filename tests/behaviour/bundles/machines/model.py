#!/usr/bin/env python3
"""The two state machines of a bundle as their tables tell them, run against the library.

Started with the path of the driver. The driver goes through all sequences of up to six events on the real library and prints
what the last event of each did; the tables here say what it has to do.
"""

import subprocess
import sys

DEPTH = 6
PENDING = 5  # the error number that stands when an event comes with one

# Sending. (state, event): (bytes written, error, next state); a member's bytes are "all" or "some".
# An event with its name in front of a colon comes in a buffer that is too short, or with an error pending.
SEND = {
    ("idle", "start"): (43, 0, "open"),
    ("idle", "short:start"): (27, 90, "idle"),
    ("idle", "abort"): (0, 2, "idle"),
    ("idle", "commit"): (0, 2, "idle"),
    ("idle", "short:abort"): (0, 2, "idle"),
    ("idle", "short:commit"): (0, 2, "idle"),
    ("idle", "allowed"): ("all", 0, "idle"),
    ("idle", "refused"): ("all", 0, "idle"),
    ("idle", "failing"): ("some", 90, "idle"),
    ("open", "start"): (0, 17, "open"),
    ("open", "short:start"): (0, 17, "open"),
    ("open", "allowed"): ("all", 0, "open"),
    ("open", "refused"): (0, 2, "open"),
    ("open", "failing"): ("some", 90, "open"),
    ("open", "abort"): (43, 0, "idle"),
    ("open", "commit"): (43, 0, "idle"),
    ("open", "short:abort"): (27, 90, "idle"),
    ("open", "short:commit"): (27, 90, "idle"),
}
for state in ("idle", "open"):
    for event in ("start", "abort", "commit", "allowed"):
        SEND[state, "pending:" + event] = (0, PENDING, state)

# Receiving. (state, event): (error, handler runs, what becomes of the members, next state).
KEEP, ADD, DROP = "keep", "add", "drop"
RECEIVE = {
    ("idle", "start"): (0, False, DROP, "accumulating"),
    ("idle", "abort"): (74, False, DROP, "idle"),
    ("idle", "commit"): (74, False, DROP, "idle"),
    ("idle", "member"): (0, False, KEEP, "idle"),
    ("idle", "failing"): (90, False, KEEP, "idle"),
    ("accumulating", "start"): (17, False, KEEP, "accumulating"),
    ("accumulating", "member"): (0, False, ADD, "accumulating"),
    ("accumulating", "failing"): (90, False, KEEP, "accumulating"),
    ("accumulating", "abort"): (0, False, DROP, "idle"),
    ("accumulating", "commit"): (0, True, DROP, "idle"),
}
for state in ("idle", "accumulating"):
    for event in ("abort", "commit"):
        RECEIVE[state, "pending:" + event] = (PENDING, False, DROP, "idle")
    RECEIVE[state, "pending:unmarshal"] = (PENDING, False, KEEP, state)
# The start handler does not look at a pending error.
RECEIVE["idle", "pending:start"] = (PENDING, False, DROP, "accumulating")
RECEIVE["accumulating", "pending:start"] = (17, False, KEEP, "accumulating")

SEND_ALPHABETS = [
    ["start", "abort", "commit", "allowed", "refused", "failing", "short:" + short, "pending:" + pending]
    for short, pending in (("start", "start"), ("abort", "abort"), ("commit", "commit"), ("commit", "allowed"))
]
RECEIVE_ALPHABETS = [
    ["start", "abort", "commit", "member", "failing", "pending:abort", "pending:commit", "pending:" + pending]
    for pending in ("unmarshal", "start")
]


def expect_send(alphabet):
    def walk(state, path):
        for event in alphabet:
            written, error, following = SEND[state, event]
            here = path + [event]
            yield here, f"{written} {error} {following}"
            if len(here) < DEPTH:
                yield from walk(following, here)

    return walk("idle", [])


def expect_receive(alphabet):
    def walk(state, members, path):
        for event in alphabet:
            error, runs, effect, following = RECEIVE[state, event]
            after = {KEEP: members, ADD: members + 1, DROP: 0}[effect]
            seen = members if runs else "-"
            here = path + [event]
            yield here, f"{error} {seen} {after} {following}"
            if len(here) < DEPTH:
                yield from walk(following, after, here)

    return walk("idle", 0, [])


def run(driver, side, alphabet, expected):
    with subprocess.Popen([driver, side, str(DEPTH), *alphabet], stdout=subprocess.PIPE, text=True) as process:
        wrong = count = 0
        for path, line in expected:
            got = process.stdout.readline().rstrip("\n")
            count += 1
            if got != line:
                wrong += 1
                if wrong <= 10:
                    print(f"{side}: {' '.join(path)}: expected {line!r}, the library gave {got!r}", file=sys.stderr)
        rest = process.stdout.read()
    ended = process.returncode == 0 and rest == ""
    print(f"{side}: {count} sequences of {' '.join(alphabet)}, {wrong} wrong")
    return wrong == 0 and ended


def main():
    driver = sys.argv[1]
    good = [run(driver, "send", alphabet, expect_send(alphabet)) for alphabet in SEND_ALPHABETS]
    good += [run(driver, "receive", alphabet, expect_receive(alphabet)) for alphabet in RECEIVE_ALPHABETS]
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
