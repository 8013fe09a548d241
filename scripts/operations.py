#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 the K7SAL authors
"""Lists every public operation in one line, by area, from Doxygen's XML: scripts/operations.py XML-FOLDER

Overloads stand in one line under the first one's text. Exits 1 when an operation of the libraries' own utilities has no
text: a reader of the index would not know what it does.
"""
import re
import sys
import xml.etree.ElementTree as xml
from pathlib import Path

AREAS = [  # folder below src/, heading, whether each operation must have a text
    ("OS/System", "System utilities", True),
    ("OS/Network", "Network quality test", False),
    ("OS/Kernel", "Device records", False),
    ("Inventory", "Inventory", True),
    ("Protocol", "Header codecs", False),
    ("Lua", "Lua bridge", False),
    ("VideoClient", "Frame tracer", False),
    ("Event", "Events", False),
    ("Sensor", "Sensors", False),
    ("Application", "Platform configuration", False),
    ("Core", "Core values", False),
    ("Foundation", "Foundation", False),
]


def text(element):
    return re.sub(r"\s+", " ", "".join(element.itertext())).strip() if element is not None else ""


def operations(folder):
    """(location, scope, name, arguments, brief) of every public operation, in the order of the headers."""
    for path in Path(folder).glob("*.xml"):
        for compound in xml.parse(path).getroot().iter("compounddef"):
            if compound.get("kind") not in ("class", "struct", "namespace"):
                continue
            scope = text(compound.find("compoundname"))
            for member in compound.iter("memberdef"):
                name = text(member.find("name"))
                location = member.find("location")
                own = scope.split("::")[-1].split("<")[0].strip()
                skipped = name == own or name.startswith(("~", "operator", "_", "columns<")) or member.get("explicit") == "deduced"
                if member.get("kind") != "function" or member.get("prot") != "public" or skipped:
                    continue
                arguments = re.sub(r"\s*(=\s*(0|default|delete)|override|noexcept|final)\b", "", text(member.find("argsstring")))
                where = (location.get("declfile", location.get("file")), int(location.get("declline", location.get("line"))))
                # In a group the text stands behind its opening mark, where Doxygen finds no brief.
                detail = re.split(r"(?<=[.;:]) ", text(member.find("detaileddescription")))[0]
                yield where, scope, name, arguments, text(member.find("briefdescription")) or detail


def main():
    rows = {}
    for where, scope, name, arguments, brief in operations(sys.argv[1]):
        rows.setdefault(where, (scope, name, arguments, brief))
    print("# Operations\n\nEvery public operation in one line; the header's comment says the rest.")
    silent = []
    for folder, heading, needs_text in AREAS:
        lines, seen = [], {}
        for where in sorted(w for w in rows if w[0].startswith(folder + "/")):
            scope, name, arguments, brief = rows[where]
            key = (where[0], scope, name)
            if key in seen:
                continue
            overloads = [rows[w][3] for w in sorted(rows) if (w[0], *rows[w][:2]) == key]
            seen[key] = next((b for b in overloads if b), "")
            if not seen[key] and needs_text:
                silent.append(f"{where[0]}:{where[1]}: {name} has no text")
            shown = scope.replace("Kivo::", "").replace("K7SystemUtil::", "")
            lines.append((where[0], f"- `{shown}::{name}{arguments}` {seen[key]}".rstrip()))
        if lines:
            print(f"\n## {heading}")
        header = ""
        for file, line in lines:
            if file != header:
                header = file
                print(f"\n### {file}\n")
            print(line)
    for line in silent:
        print(line, file=sys.stderr)
    return 1 if silent else 0


if __name__ == "__main__":
    sys.exit(main())
