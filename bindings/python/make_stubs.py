#!/usr/bin/env python3
"""make_stubs.py PACKAGE_FOLDER: writes _native.pyi beside the module, from the module itself.

Signatures and documentation are read from the module, so they cannot differ from it.
"""
import inspect
import pathlib
import re
import sys

# The special members that a type checker needs to know of.
SPECIAL = ("__init__", "__len__", "__bool__", "__iter__", "__getitem__")


def signatures(member):
    """The signatures that pybind11 puts into the documentation of a function."""
    doc = member.__doc__ or ""
    found = re.findall(r"^(?:\d+\. )?(\w*)(\(.*\)) -> (.+)$", doc, re.MULTILINE)
    return [(arguments, result) for name, arguments, result in found if name != "Overloaded"]


def clean(text):
    text = re.sub(r"<(\w+)\.(\w+): -?\d+>", r"\2", text)  # defaults that are enumeration values
    text = re.sub(r"self: [\w.]+", "self", text)
    text = text.replace("_native.", "").replace("keltrun2.", "")
    return re.sub(r"Callable\[\[(.*?)\], (\w+)\]", r"typing.Callable[[\1], \2]", text).replace(
        "Optional[", "typing.Optional[").replace("Iterator[", "typing.Iterator[").replace(
            "List[", "list[")


def prose(doc):
    """The documentation without its signatures."""
    lines = [line for line in (doc or "").splitlines()
             if not re.match(r"^(?:\d+\. )?\w+\(.*\)( -> .*)?$|^Overloaded function\.$", line)]
    return "\n".join(lines).strip()


def docstring(doc, indent):
    text = prose(doc)
    if not text:
        return [f"{indent}..."]
    body = text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"').splitlines()
    return [f'{indent}"""{body[0]}'] + [indent + line if line else "" for line in body[1:]] + [
        f'{indent}"""']


def accepted(arguments, enumerations):
    """Where an argument is an enumeration, a number is accepted as well."""
    return re.sub(r": (\w+)\b(?![.\[])", lambda m: f": typing.Union[{m[1]}, int]"
                  if m[1] in enumerations else m[0], clean(arguments))


def function(name, member, indent, enumerations):
    is_static = isinstance(member, staticmethod)
    if is_static:
        member = member.__func__
    found = signatures(member)
    for arguments, result in found:
        if is_static:
            yield f"{indent}@staticmethod"
        if len(found) > 1:
            yield f"{indent}@typing.overload"
        yield f"{indent}def {name}{accepted(arguments, enumerations)} -> {clean(result)}:"
        yield from docstring(member.__doc__, indent + "    ")


def prop(name, member):
    getter = signatures(member.fget)
    result = clean(getter[0][1]) if getter else "typing.Any"
    yield "    @property"
    yield f"    def {name}(self) -> {result}:"
    yield from docstring(member.__doc__, "        ")
    if member.fset:
        yield f"    @{name}.setter"
        yield f"    def {name}(self, value: {result}) -> None: ..."


def klass(name, cls, enumerations):
    bases = [base.__name__ for base in cls.__bases__ if not base.__name__.startswith("pybind11")]
    yield f"class {name}({', '.join(b for b in bases if b != 'object')}):".replace("()", "")
    yield from docstring(cls.__doc__, "    ")
    enumerators = getattr(cls, "__members__", {})
    for value in enumerators:
        yield f"    {value}: typing.ClassVar[{name}]"
    if enumerators:
        for operator in ("__or__", "__and__"):
            yield f"    def {operator}(self, other: object) -> int: ..."
        yield "    def __int__(self) -> int: ..."
    for key, member in vars(cls).items():
        if key in enumerators or key in ("name", "value"):
            continue
        if key in SPECIAL:
            yield from function(key, member, "    ", enumerations)
        elif key.startswith("_"):
            continue
        elif isinstance(member, property):
            yield from prop(key, member)
        elif isinstance(member, int):
            yield f"    {key}: int"
        else:
            yield from function(key, member, "    ", enumerations)
    yield ""


def main():
    folder = pathlib.Path(sys.argv[1])
    sys.path.insert(0, str(folder.parent))
    import keltrun2
    native = keltrun2._native
    enumerations = {name for name, member in vars(native).items()
                    if inspect.isclass(member) and hasattr(member, "__members__")}
    lines = ["# Made by make_stubs.py from the module.", "import typing", "", "__version__: str"]
    for name, member in vars(native).items():
        if name.startswith("_"):
            continue
        if inspect.isclass(member):
            lines += klass(name, member, enumerations)
        elif callable(member):
            lines += function(name, member, "", enumerations)
        else:
            lines.append(f"{name}: {type(member).__name__}")
    (folder / "_native.pyi").write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
