#!/usr/bin/env python3
"""The hand-written manual page must keep up with the program: every command
and every long option that --help shows must appear in timeline-convert.1.

Usage: check_manual.py TOOL MANUAL
"""
import re
import subprocess
import sys

tool, manual_path = sys.argv[1:3]
with open(manual_path) as manual_file:
    manual = manual_file.read().replace("\\-", "-")
missing = []
for command in ("convert", "assets", "render", "check"):
    help_text = subprocess.run([tool, command, "--help"], capture_output=True, text=True,
                               check=True).stdout
    for option in sorted(set(re.findall(r"--[a-z][a-z-]*", help_text))):
        if option not in manual:
            missing.append(f"{command} {option}")
    if f".B timeline-convert {command}" not in manual:
        missing.append(f"the synopsis of {command}")
sys.exit("not in the manual: " + ", ".join(missing) if missing else 0)
