#!/usr/bin/env python3
"""Reads an iCalendar file the way another program does (Python's icalendar).

Usage: read_calendar.py FILE. Prints one line a component, sorted: for an event
"event|SUMMARY|start|end|DESCRIPTION|CATEGORIES" (several categories joined by " + ") with the times on the local clock (TZ),
for a to-do "todo|SUMMARY|CATEGORIES|PRIORITY|DUE|STATUS|completed day". Fails when a
UID repeats or a time is not a moment of its own (no zone).
"""

import sys

from icalendar import Calendar


def text(value):
    if value is None:
        return ""
    if hasattr(value, "cats"):
        return " + ".join(str(c) for c in value.cats)
    return str(value)


def local(prop):
    moment = prop.dt
    if moment.tzinfo is None:
        sys.exit(f"a time without a zone: {moment}")
    return moment.astimezone().strftime("%Y-%m-%d %H:%M")


def main(path):
    with open(path, "rb") as f:
        calendar = Calendar.from_ical(f.read())
    lines, uids = [], set()
    for c in calendar.walk():
        if c.name not in ("VEVENT", "VTODO"):
            continue
        uid = str(c.get("UID"))
        if uid in uids:
            sys.exit(f"the UID {uid} repeats")
        uids.add(uid)
        if c.name == "VEVENT":
            lines.append("|".join(["event", text(c.get("SUMMARY")), local(c["DTSTART"]), local(c["DTEND"]),
                                   text(c.get("DESCRIPTION")), text(c.get("CATEGORIES"))]))
        else:
            due = c.get("DUE").dt.strftime("%Y-%m-%d") if c.get("DUE") else ""
            done = local(c["COMPLETED"])[:10] if c.get("COMPLETED") else ""
            lines.append("|".join(["todo", text(c.get("SUMMARY")), text(c.get("CATEGORIES")),
                                   text(c.get("PRIORITY")), due, text(c.get("STATUS")), done]))
    for line in sorted(lines):
        print(line)


if __name__ == "__main__":
    main(sys.argv[1])
