"""Settings as a mapping, and their changes."""
import collections.abc
import copy

import pytest

import pdfsettings
from pdfsettings import Name

TEXT = """<<
  % kept
  /ColorImageResolution 3e2   % and this
  /NeverEmbed [ /Courier ]
  /ColorImageDict << /QFactor 0.40 >>
>> setalembicorparams
"""


@pytest.fixture
def settings():
    return pdfsettings.parse(TEXT.replace("3e2", "300"))


@pytest.mark.parametrize("make", [pdfsettings.parse, pdfsettings.Document])
def test_is_a_mapping_of_paths(make):
    mapping = make(TEXT.replace("3e2", "300"))
    assert isinstance(mapping, collections.abc.Mapping)
    assert list(mapping) == list(mapping.keys()) == ["ColorImageResolution", "NeverEmbed", "ColorImageDict"]
    assert dict(mapping) == mapping.as_dict() == dict(mapping.items())
    assert mapping == mapping.as_dict() and mapping == make(bytes(mapping)) and mapping != {} and mapping != 1
    assert len(mapping) == 3 and list(mapping.values())[0] == 300
    assert "NeverEmbed/0" in mapping and "NeverEmbed/1" not in mapping and 5 not in mapping
    assert mapping["NeverEmbed/0"] == mapping.get("NeverEmbed/0") == "Courier"
    assert mapping.get("NeverEmbed/1") is None and mapping.get("No", 5) == 5
    with pytest.raises(KeyError, match="^no such key: NeverEmbed/1$"):
        mapping["NeverEmbed/1"]
    with pytest.raises(TypeError):
        hash(mapping)
    keys = iter(mapping)
    del mapping
    assert next(keys) == "ColorImageResolution"


def test_a_change_keeps_all_other_bytes(settings):
    with settings.edit() as edit:
        edit["ColorImageResolution"] = 150
        edit["ColorImageDict/Blend"] = 1
        edit.append("NeverEmbed", Name("Symbol"))
        edit.append("NeverEmbed", Name("Courier"))
        edit.set_text("GrayImageResolution", "0x10")
        assert edit.result["GrayImageResolution"] == 16 and "GrayImageResolution" not in settings
    assert settings.modified and "/GrayImageResolution 0x10" in settings.text
    for kept in ("  % kept\n", "/ColorImageResolution 150   % and this", "/QFactor 0.40", "[ /Courier /Symbol ]"):
        assert kept in settings.text
    with settings.edit() as edit:
        edit.remove("NeverEmbed", Name("Courier"))
        del edit["GrayImageResolution"], edit["ColorImageDict/Blend"]
        assert edit.copy(pdfsettings.Document("<</EndPage 5/StartPage 2>> setalembicorparams"), "*Page") == 2
        assert edit.copy(pdfsettings.Settings(), "*Page") == 0
    assert settings["NeverEmbed"] == ["Symbol"] and settings["EndPage"] == 5


def test_all_problems_of_a_change_come_together(settings):
    before = settings.text
    with pytest.raises(pdfsettings.ValidationError) as error, settings.edit() as edit:
        edit["ColorImageResolution"] = 99999
        edit["ColorImageDepth"] = 3
        edit["StartPage"], edit["EndPage"] = 5, 3
        assert edit.check()
    problems = error.value.problems
    assert {(problem.key, problem.id, problem.severity) for problem in problems} == {
        ("ColorImageResolution", "value", "error"), ("ColorImageDepth", "value", "error"), ("StartPage", "rule", "error")}
    assert problems[0].place.line == 3 and problems[0].span is not None
    assert error.value.code == pdfsettings.ErrorCode.REJECTED and str(problems[1]) in str(error.value)
    assert settings.text == before and not settings.modified
    assert settings.check("ColorImageDepth", 3)[0].message == "3 is not one of -1, 1, 2, 4, 8, 16"
    assert settings.check("ColorImageDepth", 8) == () == settings.validate()


FAILURES = [
    (lambda edit: edit.__setitem__("ColorImageResolution/0", 1), pdfsettings.NoValueError, "no-value"),
    (lambda edit: edit.__setitem__("A B", 1), pdfsettings.UnwritableError, "key"),
    (lambda edit: edit.__setitem__("", 1), pdfsettings.UnwritableError, "key"),
    (lambda edit: edit.__delitem__("Missing"), pdfsettings.NoValueError, "no-value"),
    (lambda edit: edit.set_text("EmbedAllFonts", "TRUE"), pdfsettings.ParseError, "syntax"),
    (lambda edit: edit.append("ColorImageResolution", 1), pdfsettings.KindError, "kind"),
    (lambda edit: edit.remove("NeverEmbed", Name("Arial")), pdfsettings.NoValueError, "no-value"),
    (lambda edit: edit.copy(5, "Missing"), TypeError, None),
    (lambda edit: 1 / 0, ZeroDivisionError, None)]


@pytest.mark.parametrize("fail, kind, code", FAILURES)
def test_nothing_changes_when_a_block_raises(settings, fail, kind, code):
    before = settings.text
    with pytest.raises(kind) as error, settings.edit() as edit:
        edit["StartPage"] = 2
        fail(edit)
    assert settings.text == before and getattr(error.value, "code", None) == code
    with pytest.raises(ValueError, match="the change has ended"):
        edit["StartPage"] = 2


def test_a_change_ends_once(settings):
    edit = settings.edit()
    edit["ColorImageDepth"] = 3
    with pytest.raises(pdfsettings.ValidationError):
        edit.commit()
    edit["ColorImageDepth"] = 8
    edit.commit()
    edit.drop()
    for use in (edit.commit, edit.check, lambda: edit.result, edit.warnings):
        with pytest.raises(ValueError, match="the change has ended"):
            use()
    with pytest.raises(pdfsettings.ConflictError), settings.edit() as late:
        with settings.edit() as first:
            first["StartPage"] = 2
        late["StartPage"] = 3
    assert settings["StartPage"] == 2
    result = settings.edit().result
    del settings
    assert result["StartPage"] == 2


def test_copies_are_independent(settings):
    for duplicate in (copy.copy(settings), copy.deepcopy(settings)):
        with duplicate.edit() as edit:
            edit["StartPage"] = 9
        assert "StartPage" not in settings and duplicate != settings


def test_the_standard_schema_explains_itself():
    schema = pdfsettings.Schema.standard()
    rule = schema.find("ColorImageDict/QFactor")
    assert rule in schema.rules and schema.find("No") is None and rule.kind == "number"
    assert schema.find("OtherNamespaces/2/Namespace").path == "OtherNamespaces/*/Namespace"
    assert schema.rules_of(schema.groups[0]) and schema.find_group(schema.groups[0].lower()) == schema.groups[0]
    assert "ColorImageResolution" in [found.path for found in schema.matching("colour*resolution")]
    assert schema.search("resolution of colour images") and not schema.search("zebra")
    assert schema.constraints_of("StartPage")[0].severity is pdfsettings.Severity.ERROR
    assert schema.is_unknown("EmbedAllFont") and schema.suggest("EmbedAllFont") == "EmbedAllFonts"
    assert schema.has_rules_in("ColorImageDict") and "ColorImageDict" in schema.text and schema.constraints
    with pytest.raises(pdfsettings.SchemaError) as error:
        pdfsettings.Schema.parse("<A")
    assert error.value.place.line == 1 and error.value.code == "schema"
