#!/usr/bin/env python3
"""include_direction.py ROOT: checks from the include lines of src/ that the layers hold.

A folder includes only folders below it, the pure core includes no Qt, what a program without Qt is made of none by a
detour either, no header of a platform leaves platform/, and no two files include one another, however long the way.
Prints each breach and exits 1 if there is one.
"""
import pathlib
import re
import sys

# Each folder with those that it may include besides itself.
CORE = {
    "base": set(),
    "store": {"base"},
    "status": {"base", "usage/model"},
    "platform": {"base", "async", "status"},  # the seams; async for those that are waited for
    "usage/model": {"base"},
    "usage/caches": {"base", "store", "usage/model"},
    "history": {"base", "store", "usage/model"},
    "updates/feed": {"base"},
    "telemetry": {"base", "store", "usage/model"},
    "accounts": {"base", "store", "platform"},
    "diagnostics/crash": {"base", "store", "telemetry"},
}
ORCHESTRATION = {
    "async": {"base"},
    "usage": {"base", "store", "platform", "async", "usage/model", "usage/caches", "accounts", "history"},
    "updates": {"base", "store", "platform", "async", "updates/feed"},
    "notifications": {"base", "store", "platform", "usage/model", "usage", "accounts", "history"},
    "telemetry/sending": {"base", "platform", "async", "telemetry"},
    "diagnostics": {"base", "store", "platform", "async", "usage/model", "usage/caches", "usage", "accounts", "history", "telemetry", "diagnostics/crash"},
    "app/state": {"base", "store", "platform", "async", "usage/model", "usage/caches", "usage", "accounts", "history", "telemetry", "notifications"},
    "ui/model": {"base", "store", "async", "usage/model", "usage", "accounts", "history", "telemetry", "diagnostics/crash", "app/state"},
    "status/sources": {"base", "store", "usage/model", "usage/caches", "accounts", "history", "status", "app/state", "ui/model"},
}
EDGES = {
    "platform/linux": {"base", "store", "async", "platform", "status", "usage"},
    "cli": {"base", "store", "platform/linux", "status", "status/sources"},
    "ui": set(CORE) | set(ORCHESTRATION),
    "app": set(CORE) | set(ORCHESTRATION) | {"platform/linux", "ui"},
}
ALLOWED = {**CORE, **ORCHESTRATION, **EDGES}
PURE_EXCEPTIONS = {  # included by nobody in the core
    "platform/HttpPoster.h",  # gives a task
    "platform/HttpTransport.h",  # gives a task
    "platform/StatusItem.h",  # takes pictures
}

# For a program that loads no Qt: none of it stands in what they include, however far away.
WITHOUT_QT = ("status", "status/sources", "cli")
QT = re.compile(r"Q[A-Z]|Qt|QCoro")

INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]', re.M)


def folder_of(path, folders=ALLOWED):
    """The longest known folder that `path`, relative to src/, lies in; None without one."""
    fitting = [name for name in folders if path.startswith(name + "/")]
    return max(fitting, key=len, default=None)


def breaches(files):
    """`files`: path relative to src/ -> text. Gives the list of breaches as texts."""
    found = []
    graph = {}
    with_qt = {path for path, text in files.items()
               if any(quote == "<" and QT.match(target) for quote, target in INCLUDE.findall(text))}
    for path, text in sorted(files.items()):
        folder = folder_of(path)
        if folder is None:
            found.append(f"{path}: its folder has no layer in this check")
            continue
        graph[path] = []
        for quote, target in INCLUDE.findall(text):
            if quote == "<":
                if folder in CORE and path not in PURE_EXCEPTIONS and QT.match(target):
                    found.append(f"{path}: the pure core includes <{target}>")
                continue
            other = folder_of(target)
            if other is None:
                found.append(f"{path}: includes \"{target}\", which is in no known folder")
            elif other != folder and other not in ALLOWED[folder]:
                found.append(f"{path}: {folder} may not include {other} (\"{target}\")")
            if target in PURE_EXCEPTIONS and folder in CORE and path not in PURE_EXCEPTIONS:
                found.append(f"{path}: the pure core includes \"{target}\", which needs Qt")
            graph[path].append(target)
    for path in graph:
        if folder_of(path) in WITHOUT_QT:
            found += [f"{path}: includes {other}, which includes Qt" for other in sorted(reachable(graph, path) & with_qt)]
    return found + [f"include cycle: {' -> '.join(cycle)}" for cycle in cycles(graph)]


def reachable(graph, start):
    """What `start` includes, and what that includes, and so on; with `start` itself."""
    seen, left = set(), [start]
    while left:
        path = left.pop()
        if path not in seen:
            seen.add(path)
            left += graph.get(path, [])
    return seen


def cycles(graph):
    """One path for each cycle met on a walk through the graph."""
    state, stack, found = {}, [], []

    def visit(node):
        state[node] = "open"
        stack.append(node)
        for target in graph.get(node, []):
            if state.get(target) == "open":
                found.append(stack[stack.index(target):] + [target])
            elif target not in state:
                visit(target)
        stack.pop()
        state[node] = "done"

    for node in sorted(graph):
        if node not in state:
            visit(node)
    return found


def main():
    src = pathlib.Path(sys.argv[1]) / "src"
    files = {str(path.relative_to(src)): path.read_text() for path in src.rglob("*")
             if path.suffix in (".h", ".cpp", ".in")}
    if not files:
        sys.exit(f"no files below {src}")
    found = breaches(files)
    print(*found, sep="\n", end="\n" if found else "")
    print(f"{len(files)} files, {len(found)} breaches")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
