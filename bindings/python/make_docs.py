#!/usr/bin/env python3
"""make_docs.py XML OUTPUT: the comments of the public headers as a C++ table, from Doxygen's XML.

Writes a source file with keltrun::python::Doc(name), which gives the comment of a declaration:
"Class", "Class.Member" or "Function". Overloads share the comments of all of them.

make_docs.py XML: lists the public declarations that have no comment; ends with 1 if there are any.
"""
import pathlib
import re
import sys
import textwrap
import xml.etree.ElementTree as ElementTree

SOURCE = """\
// Made by make_docs.py from the comments of the public headers.
#include "bindings/python/docs.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace keltrun::python {
namespace {

struct Entry {
  std::string_view name;
  const char* text;
};

constexpr Entry kEntries[] = {  // by name
ENTRIES
};

}  // namespace

const char* Doc(const std::string& name) {
  const auto* const found =
      std::lower_bound(std::begin(kEntries), std::end(kEntries), name,
                       [](const Entry& entry, const std::string& key) { return entry.name < key; });
  return found != std::end(kEntries) && found->name == name ? found->text : "";
}

}  // namespace keltrun::python
"""

FILL = textwrap.TextWrapper(80, break_on_hyphens=False, break_long_words=False)


def compounds(folder):
    """The descriptions of files, namespaces, classes and structures."""
    for compound in ElementTree.parse(folder / "index.xml").iter("compound"):
        if compound.get("kind") in ("class", "struct", "namespace", "file"):
            path = folder / f"{compound.get('refid')}.xml"
            yield ElementTree.parse(path).find("compounddef")


def is_public(description):
    return description.get("prot") != "private"


def declarations(folder):
    """The public declarations, as pairs of name and description."""
    for compound in filter(is_public, compounds(folder)):
        scope = ""
        if compound.get("kind") in ("class", "struct"):
            name = compound.findtext("compoundname").rpartition("::")[2]
            yield name, compound
            scope = f"{name}."
        for member in filter(is_public, compound.iter("memberdef")):
            name = member.findtext("name")
            yield (name if member.get("kind") == "enum" else scope + name), member
            for value in member.iter("enumvalue"):
                yield f"{name}.{value.findtext('name')}", value


def needs_comment(name, description):
    arguments = description.findtext("argsstring") or ""
    return "~" not in name and not arguments.endswith("=delete")


def prose(text):
    """A text in the words of Python, filled to lines."""
    text = re.sub(r"\b(?:Null|null|nullopt)\b", "None", text)
    return FILL.fill(re.sub(r"(?<=\w)::(?=\w)", ".", text).strip())


def blocks(para):
    """The parts of a paragraph: prose, and examples and tables, which are set off by indentation."""
    text = para.text or ""
    for child in para:
        if child.tag == "verbatim":
            yield prose(text)
            yield textwrap.indent(child.text.rstrip(), "    ")
            text = ""
        elif child.tag == "table":
            yield prose(text)
            rows = [[prose("".join(cell.itertext())) for cell in row] for row in child.iter("row")]
            yield textwrap.indent("\n".join(" | ".join(row) for row in rows), "    ")
            text = ""
        elif child.tag == "computeroutput":
            text += f"`{''.join(child.itertext())}`"
        elif child.tag == "ref":
            text += child.text
        else:
            sys.exit(f"make_docs.py: no plain text is known for <{child.tag}> after: {text}")
        text += child.tail or ""
    yield prose(text)


def comment(description):
    parts = []
    for form in ("briefdescription", "detaileddescription"):
        for para in description.iterfind(f"{form}/para"):
            parts += [block for block in blocks(para) if block]
    return "\n\n".join(parts)


def comments(folder):
    """The comment of each name."""
    found = {}
    for name, description in declarations(folder):
        texts = found.setdefault(name, [])
        text = comment(description)
        if text and text not in texts:
            texts.append(text)
    return {name: "\n\n".join(texts) for name, texts in found.items()}


def quoted(text):
    escaped = text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", "\\n")
    return f'"{escaped}"'


def write_table(folder, output):
    lines = [f"    {{{quoted(name)}, {quoted(text)}}},"
             for name, text in sorted(comments(folder).items()) if text]
    source = SOURCE.replace("ENTRIES", "\n".join(lines))
    # An unchanged file keeps its time, so that nothing is compiled again.
    if not output.exists() or output.read_text(encoding="utf-8") != source:
        output.write_text(source, encoding="utf-8")


def main():
    folder, *output = map(pathlib.Path, sys.argv[1:])
    if output:
        write_table(folder, output[0])
        return
    missing = [name for name, description in declarations(folder)
               if needs_comment(name, description) and not comment(description)]
    if missing:
        sys.exit("these public declarations have no comment: " + ", ".join(missing))


if __name__ == "__main__":
    main()
