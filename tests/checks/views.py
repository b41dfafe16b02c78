#!/usr/bin/env python3
"""views.py ROOT: checks that the widgets of the settings and of the first-run flow decide nothing by themselves.

They show what AppState and the models of ui/model say, and hand over what the user does. So no file of theirs reads a
clock, a file or a store: not by what it includes, and not by what it calls. Prints each breach and exits 1 if there is
one.
"""
import pathlib
import re
import sys

FOLDERS = ("src/ui/settings", "src/ui/onboarding")

# The folders whose headers a widget may include.
ALLOWED = {"app/state", "async", "base", "notifications", "platform", "ui", "ui/model", "ui/model/settings",
           "ui/onboarding", "ui/settings"}
# Of those, what reads a clock or the disk, or keeps something.
FORBIDDEN_INCLUDES = [
    (re.compile(r"^base/(Clock|SystemClock|FileHandle|Environment)\b"), "a clock, a file or the environment"),
    (re.compile(r"(^|/)\w*(Store|Stores|Cache|Files|FileCalls|FileReader|DiskPath|Folders)\.h$"), "a store"),
    (re.compile(r"^Q(File|FileInfo|Dir|DirIterator|SaveFile|TemporaryFile|TemporaryDir|FileSystemWatcher|Settings|"
                r"StandardPaths|StorageInfo|FileDialog|Process|ProcessEnvironment)$"), "the disk"),
    (re.compile(r"^Q(DateTime|Date|Time|ElapsedTimer|DeadlineTimer|Timer|BasicTimer|TimeZone)$"), "a clock"),
    (re.compile(r"^(filesystem|fstream|ctime|chrono|cstdio|time\.h|stdio\.h|fcntl\.h|unistd\.h|sys/.*)$"),
     "the system"),
]
FORBIDDEN_CALLS = [
    (re.compile(r"\b(QDateTime|QDate|QTime)::current\w*"), "a clock"),
    (re.compile(r"\b(system_clock|steady_clock|high_resolution_clock)\b|\bsystemNow\s*\("), "a clock"),
    (re.compile(r"(?<![\w.>:])(time|gettimeofday|clock_gettime)\s*\(\s*(nullptr|NULL|0|&|CLOCK_)"), "a clock"),
    (re.compile(r"\bstd::filesystem\b|\bstd::(i|o)?fstream\b"), "the disk"),
    (re.compile(r"\bQ(File|FileInfo|Dir|SaveFile|Settings|StandardPaths)\b"), "the disk"),
    (re.compile(r"\b(fopen|getenv|qgetenv|qEnvironmentVariable)\s*\("), "the system"),
    (re.compile(r"\breadFile\s*\("), "the disk"),
    (re.compile(r"\b(Preferences|Account|Telemetry|Onboarding|SharedAccounts|UsageHistory|ResetAnchor|Receipt)Store\b"),
     "a store"),
]
# What a file may include and call all the same, and why.
EXCEPTIONS = {
    # The desktop's own dialog, which shows the disk to the user; it starts in the home folder.
    "src/ui/settings/PathPanel.cpp": (("QFileDialog", "QDir"), ("QDir::homePath", "QDir::Hidden")),
}
NONE = ((), ())

INCLUDE = re.compile(r'^\s*#\s*include\s+(["<])([^">]+)[">]', re.M)
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.S)
TEXT = re.compile(r'"(?:\\.|[^"\\\n])*"')


def without_comments_and_texts(text):
    return COMMENT.sub("", TEXT.sub('""', text))


def include_breaches(path, text):
    allowed, _ = EXCEPTIONS.get(path, NONE)
    for quote, target in INCLUDE.findall(text):
        if target in allowed:
            continue
        if quote == '"' and str(pathlib.PurePosixPath(target).parent) not in ALLOWED:
            yield f'{path}: includes "{target}", which is no model of a view'
            continue
        for pattern, what in FORBIDDEN_INCLUDES:
            if pattern.search(target):
                yield f"{path}: includes {target}: {what}"
                break


def call_breaches(path, text):
    _, allowed = EXCEPTIONS.get(path, NONE)
    for line in without_comments_and_texts(INCLUDE.sub("", text)).splitlines():
        for word in allowed:
            line = re.sub(rf"\b{word}\b", "", line)
        for pattern, what in FORBIDDEN_CALLS:
            found = pattern.search(line)
            if found:
                yield f"{path}: {found.group(0)}: {what}"


def breaches(files):
    """`files`: path relative to the root -> text. Gives the list of breaches as texts."""
    found = []
    for path, text in sorted(files.items()):
        found += include_breaches(path, text)
        found += call_breaches(path, text)
    return found


def main():
    root = pathlib.Path(sys.argv[1])
    files = {str(path.relative_to(root)): path.read_text() for folder in FOLDERS
             for path in (root / folder).rglob("*") if path.suffix in (".h", ".cpp")}
    for folder in FOLDERS:
        if not any(path.startswith(folder + "/") for path in files):
            sys.exit(f"no files below {folder}")
    found = breaches(files)
    print(*found, sep="\n", end="\n" if found else "")
    print(f"{len(files)} files, {len(found)} breaches")
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
