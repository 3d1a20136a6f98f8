"""The plain values, records and errors of the module."""

from __future__ import annotations

import enum
import unicodedata
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from pathlib import Path
from typing import TYPE_CHECKING, Union

if TYPE_CHECKING:
    from ._core import Document


def _shown(text: str) -> str:
    """Text to show, with escapes for control characters and what has no character."""
    return "".join(
        c.encode("unicode_escape").decode() if unicodedata.category(c)[0] == "C" else c
        for c in text
    )


class Name(str):
    """A name without its slash: ``Name("All")`` is ``/All`` in a file. It equals the ``str`` with the
    same characters. The names ``true`` and ``false`` are booleans. Bytes that are not UTF-8 are
    surrogates, as in file names."""

    __slots__ = ()

    def __repr__(self) -> str:
        return f"Name({str.__repr__(self)})"


class HexString(str):
    """A hexadecimal string: the characters between ``<`` and ``>`` in a file, neither decoded nor
    checked. ``bytes.fromhex(text)`` decodes it, and ``HexString(data.hex())`` makes one."""

    __slots__ = ()

    def __repr__(self) -> str:
        return f"HexString({str.__repr__(self)})"


# A value as it is read. A string of a file is a str if it is UTF-8, else bytes; a number is an int if
# it is whole and at most 2**53 in size, else a float.
Value = Union[bool, int, float, str, bytes, Name, HexString, list["Value"], dict[str, "Value"]]

# A value as it may be written.
ValueLike = Union[
    bool, int, float, str, bytes, Name, HexString, Sequence["ValueLike"], Mapping[str, "ValueLike"]
]


class Severity(enum.StrEnum):
    """How serious a problem is."""

    WARNING = "warning"  #: Something is lost, or is read otherwise than it looks.
    ERROR = "error"  #: The text is refused because of it, or the schema rejects a value.


class ErrorCode(enum.StrEnum):
    """What failed. Later versions may have more."""

    SYSTEM = "system"  #: A system call failed: `FileError`.
    SYNTAX = "syntax"  #: A text is not a settings file, or not a value: `ParseError`.
    SCHEMA = "schema"  #: A schema cannot be used: `SchemaError`.
    KIND = "kind"  #: A value is of another kind, or out of range for a type: `KindError`.
    NO_VALUE = "no-value"  #: There is no value at a path, and no default: `NoValueError`.
    KEY = "key"  #: A part of a path cannot be the key of a setting: `UnwritableError`.
    UNWRITABLE = "unwritable"  #: No form in a file reads back as the value: `UnwritableError`.
    READ_ONLY = "read-only"  #: The file's owner, or the caller, may not write it: `ReadOnlyError`.
    CONFLICT = "conflict"  #: The file has changed since it was read, or exists: `ConflictError`.
    BUSY = "busy"  #: Another program uses the file, longer than the time to wait: `BusyError`.
    UNTRUSTED = "untrusted"  #: Another user could have planted a link on the path.
    IN_USE = "in-use"  #: Another component is running in this process.
    STOPPED = "stopped"  #: The program is ending, or its host stopped the component.
    COMPONENT = "component"  #: The component reported another failure.
    REJECTED = "rejected"  #: The schema rejects a change: `ValidationError`.


class Refusal(enum.StrEnum):
    """Why a text is refused."""

    INVALID_FILE = "invalid-file"  #: The text as a whole is not a settings file.
    UNKNOWN_VALUE = "unknown-value"  #: Something is a value of no kind.
    MEMORY = "memory"  #: Something has no end, or is nested too deep.


class Origin(enum.StrEnum):
    """The folder of listed settings."""

    ADMINISTRATOR = "administrator"
    USER = "user"


class ChangeKind(enum.StrEnum):
    """What has become of a watched file."""

    ADDED = "added"
    CHANGED = "changed"  #: Its contents.
    REMOVED = "removed"
    HIDDEN = "hidden"  #: From the application.
    SHOWN = "shown"
    READ_ONLY = "read-only"
    WRITABLE = "writable"
    LOOK_AGAIN = "look-again"  #: The system lost events: changes meanwhile are not reported.


@dataclass(frozen=True, slots=True)
class Place:
    """A position in a text."""

    line: int  #: From 1; CR, LF and CR LF are line ends.
    column: int  #: From 1, in characters of UTF-8; any other byte counts as one.
    file: Path | None = None  #: The file of the text, if it has one.

    def __str__(self) -> str:
        position = f"{self.line}:{self.column}"
        return position if self.file is None else _shown(f"{self.file}:{position}")


@dataclass(frozen=True, slots=True)
class Problem:
    """A finding about settings."""

    severity: Severity
    id: str  #: A fixed word such as ``"octal"``, the same in all later versions.
    key: str  #: The path of the setting; empty for a problem of no single setting.
    message: str  #: What was expected and what was found.
    place: Place | None = None  #: Where it begins; ``None`` for values without a text.
    span: tuple[int, int] | None = None  #: Its first byte in the text and the one after its last.
    related: tuple[Problem, ...] = ()  #: The other settings that a rule is about.

    def __str__(self) -> str:
        where = "" if self.place is None else f"{self.place}: "
        key = f"{self.key}: " if self.key else ""
        return _shown(f"{where}{self.severity}: {key}{self.message} [{self.id}]")


@dataclass(frozen=True, slots=True)
class Entry:
    """The position of a setting, or of an element of an array, in a document."""

    key: str  #: As it is read; empty for an element.
    key_span: tuple[int, int]  #: In bytes, with the slash; empty for an element.
    value_span: tuple[int, int]  #: In bytes, from the first to after the last.
    next: int  #: The index in `Document.entries` after all nested entries.
    depth: int  #: Of nesting; 0 for a setting.


@dataclass(frozen=True, slots=True)
class Rule:
    """The rule of a schema for one setting."""

    path: str  #: With ``*`` for every position of an array.
    kind: str  #: The schema's word: ``"boolean"``, ``"integer"``, ``"name"``, ...
    element_kind: str  #: The word for the elements of an array; empty without a restriction.
    required: bool
    count: int | None  #: The number of elements of an array.
    minimum: float | None
    maximum: float | None
    allowed: tuple[Value, ...]  #: Empty if the schema does not list the values.
    default: Value | None  #: The value that applies if the setting is missing.
    label: str  #: The name in a dialog.
    group: str  #: The label of the group; empty if there is none.
    help: str  #: A description in one line.
    expected: str  #: What may be written, in words.


@dataclass(frozen=True, slots=True)
class Constraint:
    """A rule of a schema between settings."""

    severity: Severity  #: Whether settings that violate it are rejected or advised against.
    paths: tuple[str, ...]  #: The settings, those to change first at the beginning.
    text: str  #: What must hold.
    help: str  #: Why; empty if the schema does not say.


@dataclass(frozen=True, slots=True)
class ExplainedSetting:
    """A setting that the schema knows, and its state in a set of settings."""

    rule: Rule
    value: Value | None  #: The stored value, or else the default.
    stored: bool
    changed: bool  #: It is stored and differs from the default.


@dataclass(frozen=True, slots=True)
class Difference:
    """A value that differs. ``None`` where there is no value."""

    key: str
    before: Value | None
    after: Value | None


@dataclass(frozen=True, slots=True)
class ComparedSetting:
    """A setting of several sets. ``None`` where it is missing."""

    key: str
    label: str  #: Of the schema; empty for a setting that it does not know.
    group: str
    values: tuple[Value | None, ...]  #: One for each set.
    differs: bool


@dataclass(frozen=True, slots=True)
class MergeConflict:
    """A setting that both changed, but not to the same value. ``None`` where there is no value."""

    key: str
    base: Value | None
    ours: Value | None
    theirs: Value | None
    marked: bool  #: The merged text has a comment with both.


@dataclass(frozen=True, slots=True)
class Merged:
    """The result of `merge`."""

    document: Document  #: Our text with what they changed, and our value in each conflict.
    conflicts: tuple[MergeConflict, ...]


@dataclass(frozen=True, slots=True)
class Repaired:
    """The result of `repair`."""

    document: Document
    repairs: tuple[Problem, ...]  #: What was done, with the positions in the original text.


@dataclass(frozen=True, slots=True)
class ListedSettings:
    """A settings file in the administrator's or the user's folder."""

    name: str  #: The name to show.
    file: Path  #: Absolute.
    origin: Origin
    read_only: bool
    hidden: bool  #: Whether the application hides it.
    modified: int  #: The last change of its contents, in seconds since 1970-01-01 UTC.
    applications: dict[str, bool]  #: Those that are named as showing (true) or hiding it.
    read_only_reasons: tuple[str, ...] = ()  #: With ``details``.
    shadowed: tuple[Path, ...] = ()  #: With ``details``: files of the same name, not listed.


@dataclass(frozen=True, slots=True)
class PreferencesProblem:
    """A problem of the preferences or of a settings folder."""

    file: Path  #: The property list, or the folder.
    key: str  #: A path of keys joined by slashes; may be empty.
    message: str


@dataclass(frozen=True, slots=True)
class Change:
    """What has become of a watched file."""

    kind: ChangeKind
    file: Path | None  #: Absolute; ``None`` for `ChangeKind.LOOK_AGAIN`.
    name: str  #: Under which it is or was listed; else without folder and extension.


class Error(Exception):
    """Any failure of this module but the misuse of a function, which is a `TypeError` or a
    `ValueError`, and a lack of memory, which is a `MemoryError`. ``str()`` is
    ``FILE:LINE:COLUMN: message``, without the parts that are missing."""

    code: ErrorCode  #: What failed.
    message: str  #: The message without file and position.
    file: Path | None  #: The file, if there is one.
    place: Place | None  #: The position in a text, if there is one.
    id: str  #: For texts a fixed word such as ``"unclosed"``; else empty.

    def __init__(
        self,
        text: str,
        message: str = "",
        code: ErrorCode = ErrorCode.COMPONENT,
        file: Path | None = None,
        place: Place | None = None,
        id: str = "",
    ) -> None:
        super().__init__(text)
        self.message = message or text
        self.code = code
        self.file = file
        self.place = place
        self.id = id

    def __str__(self) -> str:
        return "\n".join(map(_shown, str(self.args[0]).split("\n")))


class FileError(Error, OSError):
    """A system call failed; ``errno`` says why."""

    # Not those of OSError, which makes other arguments of two.
    def __reduce__(self) -> tuple[object, ...]:
        state = {name: getattr(self, name) for name in ("errno", "strerror", "filename")}
        return type(self), self.args[:1], {**self.__dict__, **state}


class MissingFileError(FileError, FileNotFoundError):
    """There is no such file or folder."""


class ParseError(Error, ValueError):
    """A text is not a settings file, or not a value."""


class SchemaError(Error, ValueError):
    """A schema cannot be used."""


class KindError(Error, TypeError):
    """A value is of another kind, or out of range for a type."""


class NoValueError(Error, KeyError):
    """There is no value at a path; the message has a similar path that exists."""


class UnwritableError(Error, ValueError):
    """A value or a key has no form in a file that reads back as the same."""


class ReadOnlyError(Error):
    """The file's owner, or the caller, may not write it."""


class ConflictError(Error):
    """The file has changed since it was read, or exists already; or the settings have changed since
    a change began."""


class BusyError(Error):
    """Another program uses the file, longer than the time to wait."""


class ValidationError(Error, ValueError):
    """The schema rejects a change; nothing was changed."""

    problems: tuple[Problem, ...] = ()  #: All of them.
