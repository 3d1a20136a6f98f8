"""Random values, texts, changes and arguments, for PDFSETTINGS_FUZZ_SECONDS (2) in each test."""
import contextlib
import functools
import os
import time

import hypothesis
from hypothesis import strategies as st

import pdfsettings
from pdfsettings import HexString, Name

SECONDS = float(os.environ.get("PDFSETTINGS_FUZZ_SECONDS", "2"))


def for_seconds(*arguments):
    """Runs a test with examples of hypothesis until the time is over, at least once."""
    def decorate(test):
        # Without parameters in the eyes of pytest.
        def repeat():
            check = hypothesis.given(*arguments)(test)
            check = hypothesis.settings(
                max_examples=50, deadline=None, database=None, suppress_health_check=list(hypothesis.HealthCheck))(check)
            end = time.monotonic() + SECONDS
            check()
            while time.monotonic() < end:
                check()
        repeat.__name__, repeat.__doc__ = test.__name__, test.__doc__
        return repeat
    return decorate


keys = st.sampled_from([
    "ColorImageResolution", "StartPage", "EndPage", "ColorImageDict", "ColorImageDict/QFactor", "NeverEmbed", "NeverEmbed/0",
    "NeverEmbed/1", "OtherNamespaces/0/Namespace", "A", "A/B", "A/B/0", "", "/", "A//B", "*", "Color*", "é", "\udcff", "x" * 300]) | st.text(max_size=5)
scalars = (
    st.booleans() | st.integers() | st.integers(-3, 300) | st.floats() | st.text() | st.binary() | st.text().map(Name) | st.text().map(HexString)
    | st.text("ABab01", min_size=1, max_size=4).map(Name) | st.text("0123456789abcdefABCDEF \n").map(HexString))
values = st.recursive(
    scalars, lambda inner: st.lists(inner, max_size=4) | st.dictionaries(st.text("ABC/", max_size=3) | keys, inner, max_size=4), max_leaves=12)
tokens = st.sampled_from([
    b"<<", b">>", b"<< ", b">> setalembicorparams", b"/A ", b"/StartPage 3 ", b"/ColorImageResolution ", b"/NeverEmbed [ /X ]", b"[", b"]", b"(", b")",
    b"(x) ", b"<FE FF>", b"<", b">", b"1 ", b"-", b"010 ", b"1e5 ", b"1,5", b"TRUE ", b"true ", b"%", b"\n", b"\r\n", b"\\", b"\0", b"\xff", b"\xef\xbb\xbf",
    "é".encode(), b"/", b"null", b"setalembicorparams", b"/EmbedAllFonts TRUE\n"])
texts = st.binary(max_size=60) | st.lists(tokens, max_size=25).map(b"".join) | st.lists(tokens, max_size=25).map(
    lambda parts: b"<< /StartPage 1\n" + b"".join(parts) + b"\n>> setalembicorparams\n")

# What a misuse raises: nothing else comes out of the module.
EXPECTED = (pdfsettings.Error, TypeError, ValueError, RecursionError)


def plain(value):
    """A value as it is read again."""
    if isinstance(value, dict):
        return {key: plain(inner) for key, inner in value.items()}
    if isinstance(value, list):
        return [plain(inner) for inner in value]
    if isinstance(value, bytes):
        with contextlib.suppress(UnicodeDecodeError):
            return value.decode()
    return value


@for_seconds(st.dictionaries(keys, values, max_size=4))
def test_values_are_read_as_they_were_written_or_refused(written):
    try:
        settings = pdfsettings.Settings(written)
    except EXPECTED:
        return
    assert settings.as_dict() == plain(written)
    again = pdfsettings.parse(settings.text)
    assert again == settings and repr(again.as_dict()) == repr(settings.as_dict())
    assert pdfsettings.compare(again, settings) == ()


@for_seconds(texts, texts, keys)
def test_any_text_is_kept_and_checked(text, other, key):
    document = pdfsettings.Document(text)
    assert bytes(document) == text
    problems = pdfsettings.check(document, strict=True)
    refused = [problem for problem in document.problems if problem.severity == "error"]
    assert len(refused) == (document.refusal is not None) and set(refused) <= set(problems)
    for problem in problems:
        begin, end = problem.span
        assert 0 <= begin <= end <= len(text) and document.place_of(begin) == problem.place and str(problem)
    for entry in document.entries:
        assert all(0 <= begin <= end <= len(text) for begin, end in (entry.key_span, entry.value_span))
    repaired = pdfsettings.repair(document)
    assert (bytes(repaired.document) == text) == (repaired.repairs == ())
    if document.refusal is None:
        settings = pdfsettings.parse(text)
        assert settings.text == document.text and settings == document and settings.as_dict() == dict(document)
        for read in (settings.canonical_text, settings.validate, lambda: pdfsettings.explain(settings), document.formatted, lambda: settings[key]):
            with contextlib.suppress(*EXPECTED):
                read()
    with contextlib.suppress(pdfsettings.ParseError):
        pdfsettings.merge(document, other_document := pdfsettings.Document(other), document)
        assert pdfsettings.compare(document, other_document) == () or document != other_document or document.tail != other_document.tail


changes = st.lists(st.tuples(st.sampled_from(["set", "del", "text", "append", "remove", "copy", "commit"]), keys, values), max_size=8)


@for_seconds(texts, changes)
def test_changes_are_made_as_a_whole_or_not_at_all(text, steps):
    try:
        settings = pdfsettings.parse(text)
    except pdfsettings.ParseError:
        return
    before, invalid = settings.text, len(settings.validate())
    source = pdfsettings.Document("<< /A 1 /StartPage 2 /ColorImageDict << /QFactor 0.5 >> >> setalembicorparams")
    try:
        with settings.edit() as edit:
            for step, key, value in steps:
                act = {
                    "set": lambda: edit.__setitem__(key, value), "del": lambda: edit.__delitem__(key), "append": lambda: edit.append(key, value),
                    "text": lambda: edit.set_text(key, pdfsettings.value_text(value)), "remove": lambda: edit.remove(key, value),
                    "copy": lambda: edit.copy(source, key), "commit": edit.check}[step]
                with contextlib.suppress(*EXPECTED):
                    act()
                    if step == "set":
                        assert edit.result[key] == plain(value)
            result = edit.result.text
    except pdfsettings.ValidationError as error:
        assert error.problems and settings.text == before
    else:
        assert settings.text == result and len(settings.validate()) <= invalid
    assert pdfsettings.parse(settings.text) == settings


junk = values | texts | st.none() | st.just(...) | st.sampled_from([
    object(), int, Name, "data", "/dev/null", b"\0", pdfsettings.Settings({"A": 1}), pdfsettings.Document("<< /A"), pdfsettings.Schema.standard(),
    pdfsettings.Settings().edit(), 2**64, -1, float("nan"), iter("ab"), range(3), bytearray(b"x"), pdfsettings.watch()])
# Not what would write where a path leads, make folders or read what never ends.
functions = [getattr(pdfsettings, name) for name in (
    "check", "compare", "explain", "merge", "parse", "parse_value", "repair", "tabulate", "value_text", "is_read_only", "may_miss_changes",
    "list_settings", "Settings", "Document", "watch")]
owners = [pdfsettings.Settings({"A": [1], "D": {"K": 1}}), pdfsettings.Document("<< /A 1"), pdfsettings.Schema.standard()]
functions += [
    getattr(owner, name) for owner in owners for name in dir(owner)
    if callable(getattr(owner, name)) and name.lstrip("_") not in ("open", "class__", "init_subclass__", "subclasshook__", "new__", "setattr__",
                                                                  "delattr__", "dir__", "sizeof__", "save_as", "getattribute__")]


@functools.lru_cache
def words(function):
    """The names of the arguments that a function takes by name."""
    signature = (function.__doc__ or "").split("\n")[0]
    return [word for word in ("strict", "known", "ignore", "schema", "sort", "default", "kind", "wait", "overwrite", "hidden") if word + ":" in signature]


@for_seconds(st.data(), st.sampled_from(functions), st.lists(junk, max_size=3))
def test_any_arguments_are_taken_or_refused(data, function, arguments):
    named = data.draw(st.fixed_dictionaries({}, optional={word: junk for word in words(function)}))
    with contextlib.suppress(*EXPECTED, pdfsettings.MissingFileError, StopIteration):
        function(*arguments, **named)
