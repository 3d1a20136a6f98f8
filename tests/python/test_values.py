"""Values of both languages."""
import collections
import copy
import enum
import math
import pickle
import re
import reprlib

import pytest

import pdfsettings
from pdfsettings import HexString, KindError, Name, UnwritableError


class Strategy(enum.StrEnum):
    RGB = "sRGB"


class Number(enum.IntEnum):
    TWO = 2


def nested(levels):
    value = 1
    for _ in range(levels):
        value = [value]
    return value


class Reordered(collections.UserDict):
    """A mapping that is no dict."""


KEPT = [
    True, False, 0, -5, 2**53, -(2**53), 0.5, -1.25, 1e-7, 1e300, "", "Dot Gain 20%", "a)b(c\\", "Köln €",
    "nul\0and\r\nline", b"\xff\x00\xfe", Name("All"), Name("\udcff"), HexString("FEFF 0041"), HexString("no hex"),
    [], [1, [Name("A"), "text", b"\xff"], {"K": 0.5}], {"A": {"B": [True]}}, nested(100)]

CONVERTED = [
    ((1, 2), [1, 2]), (range(3), [0, 1, 2]), (Strategy.RGB, "sRGB"), (Number.TWO, 2), (1.0, 1), (b"text", "text"),
    (Name("true"), True), (Reordered(A=1), {"A": 1}), (pdfsettings.Settings({"A": [1]}), {"A": [1]})]

own_list, own_dict = [], {}
own_list.append(own_list)
own_dict["A"] = [own_dict]

REJECTED = [
    (math.nan, UnwritableError), (math.inf, UnwritableError), (2**53 + 1, UnwritableError), (-(10**400), UnwritableError),
    ("\ud800", ValueError), (Name("\ud800"), ValueError), (Name("a b"), UnwritableError), (Name("x" * 256), UnwritableError),
    (HexString(">"), UnwritableError), (None, TypeError), (object(), TypeError), (bytearray(b"x"), TypeError),
    ({1: 2}, TypeError), ({"A B": 1}, UnwritableError), ({1, 2}, TypeError), (1j, TypeError), (nested(1001), RecursionError), (nested(50000), RecursionError),
    (own_list, RecursionError), (own_dict, RecursionError)]


def same(one, other):
    """Whether values and their classes are equal."""
    if isinstance(one, list):
        return type(other) is list and len(one) == len(other) and all(map(same, one, other))
    return type(one) is type(other) and one == other


@pytest.mark.parametrize("value", KEPT, ids=reprlib.repr)
def test_a_value_is_read_as_it_was_written(value):
    settings = pdfsettings.parse(pdfsettings.Settings({"K": value}, "tail").text)
    assert same(settings["K"], value)
    assert same(settings.value("K"), value) and same(settings.as_dict()["K"], value)
    assert settings.tail == b"tail"
    with settings.edit() as edit:
        edit["Other/K"] = value
    assert same(settings["Other/K"], value)


@pytest.mark.parametrize("value, kept", CONVERTED, ids=repr)
def test_similar_classes_are_converted(value, kept):
    assert same(pdfsettings.Settings({"K": value})["K"], kept)


@pytest.mark.parametrize("value, error", REJECTED, ids=reprlib.repr)
def test_what_no_file_can_hold_raises_and_changes_nothing(value, error):
    settings = pdfsettings.parse("<< /K 1 >> setalembicorparams")
    with pytest.raises(error), settings.edit() as edit:
        edit["First"] = 1
        edit["K"] = value
    assert settings == {"K": 1}
    uses = (lambda: pdfsettings.Settings({"First": 1, "K": value}), lambda: settings.edit().append("NeverEmbed", value), lambda: pdfsettings.value_text(value))
    for use in uses:
        with pytest.raises(error) as raised:
            use()
        assert use is uses[2] or re.search(r"\b(K|NeverEmbed)\b", " ".join([str(raised.value), *getattr(raised.value, "__notes__", [])]))
    if error is UnwritableError:
        assert [problem.id for problem in settings.check("K", value)] == ["unwritable"]


@pytest.mark.parametrize("value", KEPT + [Name("%"), HexString("4 1"), Name("a#b")], ids=reprlib.repr)
def test_an_element_is_added_once_and_removed(value):
    settings = pdfsettings.Settings({"L": [5, [6]]})
    with settings.edit() as edit:
        edit.append("L", value)
        edit.append("L", value)
        assert same(edit.result["L"], [5, [6], value])
        edit.remove("L", value)
    assert settings == {"L": [5, [6]]}


def test_a_thousand_levels_are_read():
    value = pdfsettings.Settings({"K": nested(999)})["K"]
    for _ in range(998):
        [value] = value
    assert value == [1]
    deep = pdfsettings.Document("<< /K " + "[ " * 5000 + "1 " + "] " * 5000 + ">> setalembicorparams")
    with pytest.raises(RecursionError):
        deep.as_dict()


KINDS = {
    "B": (True, {bool, Name}), "I": (7, {int, float}), "F": (0.5, {float}), "S": ("text", {str, bytes}), "Y": (b"\xff", {bytes}),
    "N": (Name("All"), {Name}), "H": (HexString("00"), {HexString}), "L": ([1], {list}), "D": ({"K": 1}, {dict})}


@pytest.mark.parametrize("key", KINDS)
def test_a_value_is_read_as_its_kinds_only(key):
    settings = pdfsettings.Settings({key: value for key, (value, _) in KINDS.items()})
    for kind in (bool, int, float, str, bytes, Name, HexString, list, dict):
        if kind in KINDS[key][1]:
            assert type(settings.value(key, kind)) is kind
        else:
            with pytest.raises(KindError, match=f"^{key}: expected "):
                settings.value(key, kind)
    assert settings.value("missing", str, "default") == "default"
    assert settings.value("missing", default=None) is None
    with pytest.raises(TypeError, match="the kind is bool"):
        settings.value(key, complex)


def test_names_and_records_survive_pickling_and_copying():
    problem = pdfsettings.check(pdfsettings.parse("<< /ColorImageDepth 3 >> setalembicorparams"))[0]
    rule = pdfsettings.Schema.standard().find("ColorImageDepth")
    with pytest.raises(FileNotFoundError) as missing:
        pdfsettings.open("/no/such\udcff")
    with pytest.raises(pdfsettings.ValidationError) as rejected, pdfsettings.Settings().edit() as edit:
        edit["ColorImageDepth"] = 3
    assert pickle.loads(pickle.dumps(pdfsettings.check)) is pdfsettings.check
    for value in (Name("All"), HexString("00"), problem, rule):
        again = pickle.loads(pickle.dumps(copy.deepcopy(value)))
        assert again == value and repr(again) == repr(value)
        with pytest.raises(AttributeError):
            setattr(value, "path" if value is rule else "id", "changed")
    for error in (missing.value, rejected.value):
        again = pickle.loads(pickle.dumps(error))
        assert type(again) is type(error) and vars(again) == vars(error) and str(again) == str(error)
    again = pickle.loads(pickle.dumps(missing.value))
    assert (again.errno, again.strerror, again.filename) == (2, "No such file or directory", "/no/such\udcff")


def test_text_and_value_convert_alone():
    assert pdfsettings.parse_value(" [ /A (x) 8 ] % comment") == ["A", "x", 8]
    assert pdfsettings.value_text([Name("A"), "a)b", {"K": 0.5}]) == "[ /A (a\\)b) << /K 0.5 >> ]"
    with pytest.raises(pdfsettings.ParseError) as error:
        pdfsettings.parse_value("[ 1\n  x ]")
    assert error.value.place == pdfsettings.Place(2, 3)
