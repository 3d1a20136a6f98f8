"""A program that uses all of the module, for the type check."""
import asyncio
import pathlib
import sys
from typing import assert_type

import pdfsettings as ps


def read(file: pathlib.Path) -> None:
    settings = ps.open(file, ps.Schema.standard())
    assert_type(settings["StartPage"], ps.Value)
    assert_type(settings.value("StartPage", int), int)
    assert_type(settings.value("EmbedAllFonts", bool, True), bool)
    assert_type(settings.value("X", default=None), ps.Value | None)
    assert_type(settings.value("AutoRotatePages", ps.Name, None), ps.Name | None)
    assert_type(settings.value("NeverEmbed", list), list[ps.Value])
    assert_type(settings.value("ColorImageDict", dict, {}), dict[str, ps.Value])
    digits = settings.value("Missing", ps.HexString, ps.HexString("00"))
    names: list[ps.Name] = [name for name in settings.value("NeverEmbed", list) if isinstance(name, ps.Name)]
    print(digits, names, settings.get("StartPage", 1), list(settings.keys()), list(settings.values()), settings.as_dict())
    for key, value in settings.items():
        print(key, ps.value_text(ps.parse_value("1")), value)
    print(settings.text, settings.tail, settings.file, settings.canonical_text(), settings.schema.text, settings.modified, settings.stale())
    problems: tuple[ps.Problem, ...] = settings.validate() + settings.warnings() + settings.check("StartPage", 5) + ps.check(settings)
    for problem in problems:
        place: ps.Place | None = problem.place
        print(problem.severity is ps.Severity.ERROR, problem.id, place.line if place else 0, problem.related)


def change(file: pathlib.Path, font: ps.ValueLike) -> None:
    settings = ps.parse(file.read_bytes())
    try:
        with settings.edit() as edit:
            edit["StartPage"], edit["ColorImageDict/HSamples"] = 1, [1, 2, 2, 1]
            del edit["EndPage"]
            edit.set_text("EndPage", "5")
            edit.append("NeverEmbed", font)
            edit.remove("NeverEmbed", font)
            print(edit.copy(file, "Gray*"), edit.result, edit.check(), edit.warnings())
        other: ps.Edit = settings.edit()
        other.commit() if not other.check() else other.drop()
        print(settings.save_as(file.with_suffix(".new"), overwrite=True), settings.save(wait=1), ps.is_read_only(file))
        settings.reload()
    except ps.ValidationError as error:
        print(error.problems, error.code is ps.ErrorCode.REJECTED)
    except (ps.NoValueError, ps.KindError, ps.UnwritableError, ps.ParseError, ps.SchemaError, ps.MissingFileError) as error:
        print(error.message, error.file, error.id)
    except (ps.ConflictError, ps.ReadOnlyError, ps.BusyError) as error:
        print(error.place)
    except ps.FileError as error:
        print(error.errno)
    except ps.Error as error:
        print(error)


def compare(file: pathlib.Path) -> None:
    document = ps.Document.open(file)
    entry: ps.Entry | None = document.find("StartPage")
    print(entry, document.refusal is ps.Refusal.MEMORY, document.problems, document.entries, document.body, document.tail, document.file, document.text)
    print(document.place_of(3), document.line_at(3), list(document.keys()), list(document.values()), list(document.items()), document.get("A"))
    changed = document.with_value("StartPage", 2).with_text("EndPage", "3").with_copy("Optimize", document).without("Binding").formatted()
    changed.require_read()
    differences: tuple[ps.Difference, ...] = ps.compare(document, changed)
    table: tuple[ps.ComparedSetting, ...] = ps.tabulate([document, changed, ps.Settings(document.as_dict())])
    merged: ps.Merged = ps.merge(document, changed, document)
    conflicts: tuple[ps.MergeConflict, ...] = merged.conflicts
    repaired: ps.Repaired = ps.repair(document)
    print(differences, table[0].values, conflicts, ps.save(file, repaired.document, seen=document))
    explained: tuple[ps.ExplainedSetting, ...] = ps.explain(ps.open(file))
    rules: list[ps.Rule] = [known.rule for known in explained]
    print(rules)


def search(file: pathlib.Path) -> None:
    schema = ps.Schema.open(file) if file.suffix == ".schema" else ps.Schema.parse(ps.Schema.standard().text)
    constraints: tuple[ps.Constraint, ...] = schema.constraints + schema.constraints_of("StartPage")
    print(constraints, ps.Schema.problems("<"), schema.rules, schema.groups, schema.rules_of(schema.find_group("general")))
    print(schema.find("A"), schema.search("page"), schema.matching("*Page"), schema.is_unknown("A"), schema.suggest("A"), schema.has_rules_in("A"))


async def watch(folder: pathlib.Path) -> None:
    with ps.watch(folder, listed=True, application="app") as watcher:
        own: ps.Watcher = watcher
        own.add(folder / "a.joboptions")
        own.add_folder(folder)
        own.add_listed()
        print(own.fileno(), own.read(), own.closed, ps.may_miss_changes(folder))
        (folder / "a.joboptions").write_text("")
        async for change in own:
            assert_type(change, ps.Change)
            print(change.kind is ps.ChangeKind.ADDED, change.file, change.name)
            own.close()


def listed() -> None:
    sets: tuple[ps.ListedSettings, ...] = ps.list_settings("app", hidden=True, details=True)
    print([found.name for found in sets if found.origin is ps.Origin.USER])
    found: tuple[ps.PreferencesProblem, ...] = ps.check_preferences()
    print(found, ps.user_folder(), ps.administrator_folder(), ps.administrator_preferences(), ps.unusable_preferences())


def main(folder: pathlib.Path) -> None:
    file = folder / "office.joboptions"
    read(file)
    change(file, ps.Name("Courier"))
    compare(file)
    search(folder / "standard.schema")
    asyncio.run(watch(folder))
    listed()


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]))
