#!/usr/bin/env python3
"""make_docs.py OUTPUT HEADER...: the documentation of the public headers as a C++ table.

Writes a source file with keltrun::python::Doc(name), which gives the comment above a member: "Class",
"Class.Member" or "Function". One comment may stand above several members in a row; a remark behind
a data member is its documentation.
"""
import pathlib
import re
import sys

SCOPE = re.compile(r"^\s*(class|struct|enum(?: class)?)\s+(?:KELTRUN2_API )?(\w+)[^;]*\{")
SKIPPED = re.compile(r"^\s*(?:#|//[^/]|//$|namespace|(?:class|struct) \w+;|using|template|friend|private:|public:|protected:)")


def declared_name(line):
    """The name that a line of a header declares, or None."""
    code = re.sub(r"//.*", "", line)
    code = re.sub(r"<[^<>]*>", "", re.sub(r"<[^<>]*>", "", code))
    function = re.search(r"(\w+)\s*\(", code)
    if function:
        return function.group(1)
    data = re.search(r"(\w+)\s*(?:=[^;]*|\{[^;]*\})?;", code)
    return data.group(1) if data else None


class Scope:
    """A class, structure or enumeration that the reader is inside of."""

    def __init__(self, kind, name, depth):
        self.name, self.depth, self.is_public = name, depth, kind != "class"


class Reader:
    """Collects the documentation of public declarations; function bodies are not looked into."""

    def __init__(self):
        self.docs = {}

    def read(self, path):
        self.scopes, self.depth, self.parentheses = [], 0, 0
        self.comment, self.above, self.continues = [], "", False
        for line in path.read_text(encoding="utf-8").splitlines():
            self._read_line(line)

    def _read_line(self, line):
        stripped = line.strip()
        if stripped.startswith("///"):
            self.comment.append(stripped[3:].removeprefix(" "))
            return
        if self.comment:
            self.above, self.comment = "\n".join(self.comment), []
        if not stripped:
            self.above = ""
        elif not self.continues:
            self._read_declaration(line)
        code = re.sub(r"//.*", "", line).rstrip()
        self.depth += code.count("{") - code.count("}")
        self.parentheses += code.count("(") - code.count(")")
        self.continues = self.parentheses > 0 or not re.search(r"^$|[;{}:,]$", code)
        while self.scopes and self.depth <= self.scopes[-1].depth:
            self.scopes.pop()
            self.above = ""

    def _read_declaration(self, line):
        access = re.match(r"^ (public|protected|private):", line)
        found = SCOPE.match(line)
        if access:
            self.scopes[-1].is_public = access.group(1) == "public"
        elif not self._is_public_place():
            return
        elif found:
            kind, name = found.groups()
            self._add(name, self.above, nested=False)
            self.scopes.append(Scope(kind, name, self.depth))
            self.above = ""
        elif not SKIPPED.match(line):
            name = declared_name(line)
            remark = re.search(r"//\s*(.*)$", line)
            if name:
                self._add(name, remark.group(1) if remark else self.above, nested=True)

    def _is_public_place(self):
        if not self.scopes:
            return self.depth <= 1  # in the namespace
        return (self.depth == self.scopes[-1].depth + 1
                and all(scope.is_public for scope in self.scopes))

    def _add(self, name, text, nested):
        key = f"{self.scopes[-1].name}.{name}" if nested and self.scopes else name
        self.docs[key] = self.docs.get(key) or text.strip()


def quoted(text):
    text = re.sub(r"\b(?:Null|null|nullopt)\b", "None", text)
    escaped = text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
    return f'"{escaped}"'


def main():
    output, *headers = sys.argv[1:]
    reader = Reader()
    for header in headers:
        reader.read(pathlib.Path(header))
    lines = [f"      {{{quoted(name)}, {quoted(text)}}}," for name, text in sorted(reader.docs.items())
             if text]
    pathlib.Path(output).write_text(
        "// Made by make_docs.py from the public headers.\n"
        '#include "bindings/python/binding.h"\n\n#include <map>\n\nnamespace keltrun::python {\n\n'
        "const char* Doc(const std::string& name) {\n"
        "  static const std::map<std::string, const char*> docs = {\n" + "\n".join(lines) +
        '\n  };\n  const auto found = docs.find(name);\n'
        '  return found == docs.end() ? "" : found->second;\n}\n\n}  // namespace keltrun::python\n',
        encoding="utf-8")


if __name__ == "__main__":
    main()
