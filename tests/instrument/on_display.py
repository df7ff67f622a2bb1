#!/usr/bin/env python3
"""Runs a program on an X server of its own: on_display.py PROGRAM [ARGUMENT...]. Exits with its exit code."""
import os
import subprocess
import sys

with subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                      stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as server:
    display = ":" + server.stdout.readline().strip()
    code = subprocess.run(sys.argv[1:], env={**os.environ, "DISPLAY": display, "QT_QPA_PLATFORM": "xcb"}).returncode
    server.terminate()
sys.exit(code)
