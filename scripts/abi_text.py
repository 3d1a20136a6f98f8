#!/usr/bin/env python3
"""Writes what a dump of abidw says of the C++ API, without what depends on the build: abi_text.py DUMP

A line for each exported symbol, for each class with its size, for each of its members with their
offset and type, and for each enumerator, sorted.
"""

import sys
import xml.etree.ElementTree as ElementTree

NAMESPACE = "pdfsettings"
PRIVATE = ("detail", "Data", "Details", "State", "Reading")


def type_names(root):
    """The names of all types by their ids, as far as they have any."""
    types = {node.get("id"): node for node in root.iter() if node.get("id")}

    def name(identifier, depth=0):
        node = types.get(identifier)
        if node is None or depth > 20:
            return "?"
        target = node.get("type-id")
        if node.tag == "pointer-type-def":
            return name(target, depth + 1) + "*"
        if node.tag == "reference-type-def":
            return name(target, depth + 1) + "&"
        if node.tag == "qualified-type-def":
            return name(target, depth + 1) + " const"
        return node.get("name", "?")

    return name


def describe(node, scope, name_of, lines):
    """Adds the lines for the classes and enumerations in a namespace or a class."""
    for child in node:
        name = child.get("name", "")
        if child.tag == "member-type":
            describe(child, scope, name_of, lines)
        elif child.tag == "class-decl" and not child.get("is-declaration-only"):
            if name in PRIVATE:
                continue
            full = f"{scope}::{name}"
            lines.add(f"class {full} {child.get('size-in-bits')} bits")
            for base in child.findall("base-class"):
                lines.add(f"class {full} base {name_of(base.get('type-id'))}")
            for member in child.findall("data-member"):
                variable = member.find("var-decl")
                offset = member.get("layout-offset-in-bits", "static")
                lines.add(
                    f"class {full} member {offset} {variable.get('name')}: "
                    f"{name_of(variable.get('type-id'))}")
            describe(child, full, name_of, lines)
        elif child.tag == "enum-decl":
            for enumerator in child.findall("enumerator"):
                lines.add(
                    f"enum {scope}::{name} {enumerator.get('name')} = {enumerator.get('value')}")


def main():
    root = ElementTree.parse(sys.argv[1]).getroot()
    lines = set()
    for symbol in root.iter("elf-symbol"):
        # What the compiler makes for its own use, such as the type of a lambda, is none of it.
        if "Z" not in symbol.get("name")[2:].split("11" + NAMESPACE)[0].replace("ZN", ""):
            lines.add(f"symbol {symbol.get('name')}@{symbol.get('version')}")
    name_of = type_names(root)
    for space in root.iter("namespace-decl"):
        if space.get("name") == NAMESPACE:
            describe(space, NAMESPACE, name_of, lines)
    print("\n".join(sorted(lines)))


if __name__ == "__main__":
    main()
