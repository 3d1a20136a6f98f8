"""Documents: positions, changes of text, findings, repairs and comparisons."""
import pathlib

import pytest

import pdfsettings
from pdfsettings import Difference, Name, Place

TEXT = "%é\r<<\r  /A 1 % é\r  /B [ /X\r /Y ] /A (\xff)\r>> setalembicorparams\rtail".encode("latin-1").replace(b"\xe9", "é".encode())


def test_a_document_keeps_every_byte_and_knows_its_positions():
    document = pdfsettings.Document(TEXT)
    assert bytes(document) == TEXT == document.text.encode("utf-8", "surrogateescape")
    assert document.tail == b"tail" and document.file is None and document.refusal is None
    assert document.as_dict() == {"A": b"\xff", "B": ["X", "Y"]}
    entries = document.entries
    assert [(entry.key, entry.depth, entry.next) for entry in entries] == [("A", 0, 1), ("B", 0, 4), ("", 1, 3), ("", 1, 4), ("A", 0, 5)]
    begin, end = document.find("B/1").value_span
    assert TEXT[begin:end] == b"/Y" and document.place_of(begin) == Place(5, 2)
    assert TEXT[slice(*document.line_at(begin))] == b" /Y ] /A (\xff)" and TEXT[slice(*document.body)].startswith(b"\r  /A 1")
    assert document.find("C") is None
    for offset in (len(TEXT) + 1, 2**63):
        with pytest.raises((IndexError, TypeError)):
            document.place_of(offset)
    assert [problem.id for problem in document.problems] == ["duplicate"]
    assert document.problems[0].place == Place(5, 7)


def test_changes_keep_comments():
    document = pdfsettings.Document("<< % c\n /A 1.50 /B 2 >> setalembicorparams")
    other = pdfsettings.Document("<< /A 0x10 >> setalembicorparams")
    for changed, text in [
            (document.with_value("A", 3), "<< % c\n /A 3 /B 2 >> setalembicorparams"),
            (document.with_text("A", "0x10"), "<< % c\n /A 0x10 /B 2 >> setalembicorparams"),
            (document.with_copy("A", other), "<< % c\n /A 0x10 /B 2 >> setalembicorparams"),
            (document.without("B"), "<< % c\n /A 1.50 >> setalembicorparams"),
            (document.formatted(sort=True), "<< % c\n  /A 1.50\n  /B 2\n>> setalembicorparams")]:
        assert changed.text == text and document["A"] == 1.5
    with pytest.raises(pdfsettings.NoValueError):
        document.without("C")


REFUSED = [("junk", "no-settings", "invalid-file"), ("<< /A x >>", "unknown-value", "unknown-value"), ("<< /A (x", "open-string", None)]


@pytest.mark.parametrize("text, word, refusal", REFUSED)
def test_a_refused_text_has_a_reason_in_its_file(folder, text, word, refusal):
    (folder / "refused").write_text(text)
    for source in (folder / "refused", pdfsettings.Document.open("refused"), b"refused", "refused"):
        error = pdfsettings.check(source)[0]
        assert error.severity == "error" and error.id == word and error.place.file.absolute() == folder / "refused"
    document = pdfsettings.Document.open("refused")
    assert not document and (refusal is None or document.refusal == refusal)
    uses = (
        document.require_read, lambda: pdfsettings.open("refused"), lambda: document.with_value("A", 1), document.formatted,
        lambda: pdfsettings.compare("press.joboptions", "refused"), lambda: pdfsettings.tabulate(["refused"]),
        lambda: pdfsettings.merge("press.joboptions", document, "press.joboptions"), lambda: pdfsettings.Settings().edit().copy("refused", "*"))
    for use in uses:
        with pytest.raises(pdfsettings.ParseError) as raised:
            use()
        assert raised.value.file == pathlib.Path("refused") and raised.value.place == error.place and raised.value.id == word


def test_check_reports_what_its_options_ask_for(folder):
    (folder / "odd").write_text("<<\n  /EmbedAllFont true\n  /SiteA 1\n  /ColorImageResolution 3e2 /ColorImageDepth 3\n>> setalembicorparams\n")
    def ids(**options):
        return [problem.id for problem in pdfsettings.check("odd", **options)]
    assert ids() == ["stuck", "value"]
    assert ids(strict=True) == ["unknown-key", "unknown-key", "stuck", "value"]
    assert ids(strict=True, known=["Site*"], ignore={"value"}) == ["unknown-key", "stuck"]
    with pytest.raises(TypeError, match="several texts"):
        ids(known="Site*")
    first = pdfsettings.check("odd", strict=True)[0]
    assert str(first) == "odd:2:3: warning: EmbedAllFont: the schema has no such setting; did you mean EmbedAllFonts? [unknown-key]"
    [rule] = pdfsettings.check(pdfsettings.Settings({"StartPage": 5, "EndPage": 3}))
    assert [other.key for other in rule.related] == ["EndPage"] and rule.related[0].place.line == 3
    own = pdfsettings.Schema.parse("< PDFSettings < optional < > > >")
    assert pdfsettings.check(pdfsettings.open("odd", own), ignore=["stuck"]) == ()


def test_repair_changes_what_has_one_meaning(folder):
    (folder / "odd").write_bytes(b"<<\n  /EmbedAllFonts TRUE\n  /GrayImageDownsampleThreshold 1,5\n>>")
    repaired = pdfsettings.repair("odd")
    assert [repair.id for repair in repaired.repairs] == ["unknown-value", "stuck", "keyword"]
    assert repaired.document.as_dict() == {"EmbedAllFonts": True, "GrayImageDownsampleThreshold": 1.5}
    assert repaired.document.file.name == "odd" and pdfsettings.check(repaired.document) == ()
    assert pdfsettings.save("odd", repaired.document, seen=pdfsettings.Document.open("odd")) == ()
    assert pdfsettings.repair("odd").repairs == ()


def test_sets_are_compared_tabulated_and_merged(folder):
    base = pdfsettings.Settings({"A": 1, "StartPage": 1, "D": {"K": [1]}})
    ours = base.document.with_value("A", 2).with_value("StartPage", 2)
    theirs = base.document.with_value("A", 3).with_value("D/K", [1, 2])
    assert pdfsettings.compare(base, ours) == (Difference("A", 1, 2), Difference("StartPage", 1, 2))
    assert pdfsettings.compare(ours, pdfsettings.Settings({"N": Name("N")}))[-1] == Difference("N", None, Name("N"))
    page, a, k = pdfsettings.tabulate([base, ours])
    assert (page.key, page.group, page.values, page.differs) == ("StartPage", "General", (1, 2), True)
    assert (a.key, a.label, k.key, k.differs) == ("A", "", "D/K", False)
    merged = pdfsettings.merge(base, ours, theirs)
    assert merged.document == {"A": 2, "StartPage": 2, "D": {"K": [1, 2]}}
    [conflict] = merged.conflicts
    assert (conflict.key, conflict.base, conflict.ours, conflict.theirs, conflict.marked) == ("A", 1, 2, 3, True)
    changed = [setting for setting in pdfsettings.explain(base) if setting.stored]
    assert [(setting.rule.path, setting.value, setting.changed) for setting in changed] == [("StartPage", 1, False)]
