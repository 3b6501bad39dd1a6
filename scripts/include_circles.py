#!/usr/bin/env python3
"""Fails when the product's modules include each other in a circle.

A module is a header and its source (foundation/logger.h and .cpp); tests,
test support and benchmarks are left out. Prints each circle found.
"""
import glob
import os
import re
import sys

FOLDERS = "foundation fileops settings environment questions copyscript driver".split()
root = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..")

includes = {}
for folder in FOLDERS:
    for path in glob.glob(os.path.join(root, folder, "*.[ch]*")):
        name = os.path.relpath(path, root)
        if re.search(r"(_test\.cpp|_bench\.cpp|/test_[^/]*\.h|test_support\.h)$", name):
            continue
        module = name.rsplit(".", 1)[0]
        with open(path, encoding="utf-8") as text:
            found = re.findall(r'#include "([^"]+)"', text.read())
        includes.setdefault(module, set()).update(f.rsplit(".", 1)[0] for f in found)

circles = []
state = {}


def visit(module, trail):
    state[module] = "open"
    for other in sorted(includes.get(module, ())):
        if other == module:
            continue
        if state.get(other) == "open":
            circles.append(trail[trail.index(other):] + [other])
        elif other not in state:
            visit(other, trail + [other])
    state[module] = "done"


for module in sorted(includes):
    if module not in state:
        visit(module, [module])
for circle in circles:
    print("include circle: " + " -> ".join(circle))
print(f"{len(includes)} modules, {len(circles)} include circles")
sys.exit(1 if circles else 0)
