"""Named sets of PDF conversion settings, `.joboptions` files: read, validated, changed and saved.

`Settings` is a mapping from paths such as ``"ColorImageDict/QFactor"`` to plain values:

    import pdfsettings

    settings = pdfsettings.open("press.joboptions")
    with settings.edit() as edit:
        edit["ColorImageResolution"] = 150
    settings.save()

Comments and layout of the file stay. Every function and class may be used from any thread. File work
and long computations release the interpreter's lock. The module works in the main interpreter of a
process only.
"""

import functools
import sys
import types
from collections.abc import Callable

from . import _core

_core.require_main_interpreter()
# After a second import too, the classes are those that the core makes.
_types = sys.modules[__name__ + "._types"] = _core._types

from ._core import (  # noqa: E402
    Document,
    Edit,
    Schema,
    Settings,
    administrator_folder,
    administrator_preferences,
    check,
    check_preferences,
    compare,
    explain,
    is_read_only,
    list_settings,
    may_miss_changes,
    merge,
    open,
    parse,
    parse_value,
    repair,
    save,
    tabulate,
    unusable_preferences,
    user_folder,
    value_text,
)
from ._types import (  # noqa: E402
    BusyError,
    Change,
    ChangeKind,
    ComparedSetting,
    ConflictError,
    Constraint,
    Difference,
    Entry,
    Error,
    ErrorCode,
    ExplainedSetting,
    FileError,
    HexString,
    KindError,
    ListedSettings,
    MergeConflict,
    Merged,
    MissingFileError,
    Name,
    NoValueError,
    Origin,
    ParseError,
    Place,
    PreferencesProblem,
    Problem,
    ReadOnlyError,
    Refusal,
    Repaired,
    Rule,
    SchemaError,
    Severity,
    UnwritableError,
    ValidationError,
    Value,
    ValueLike,
)
from ._watch import Watcher, watch  # noqa: E402

__version__ = _core.__version__

__all__ = [
    "BusyError",
    "Change",
    "ChangeKind",
    "ComparedSetting",
    "ConflictError",
    "Constraint",
    "Difference",
    "Document",
    "Edit",
    "Entry",
    "Error",
    "ErrorCode",
    "ExplainedSetting",
    "FileError",
    "HexString",
    "KindError",
    "ListedSettings",
    "MergeConflict",
    "Merged",
    "MissingFileError",
    "Name",
    "NoValueError",
    "Origin",
    "ParseError",
    "Place",
    "PreferencesProblem",
    "Problem",
    "ReadOnlyError",
    "Refusal",
    "Repaired",
    "Rule",
    "Schema",
    "SchemaError",
    "Settings",
    "Severity",
    "UnwritableError",
    "ValidationError",
    "Value",
    "ValueLike",
    "Watcher",
    "administrator_folder",
    "administrator_preferences",
    "check",
    "check_preferences",
    "compare",
    "explain",
    "is_read_only",
    "list_settings",
    "may_miss_changes",
    "merge",
    "open",
    "parse",
    "parse_value",
    "repair",
    "save",
    "tabulate",
    "unusable_preferences",
    "user_folder",
    "value_text",
    "watch",
]


def _named(function: Callable[..., object]) -> Callable[..., object]:
    """Wraps a built-in function so that it can be pickled by name, for a pool of processes."""

    @functools.wraps(function)
    def call(*arguments: object, **named: object) -> object:
        return function(*arguments, **named)

    call.__qualname__ = function.__name__
    return call


# Error messages and pickles name what users import; the classes of _core do so already.
for _name in __all__:
    _public = globals()[_name]
    if isinstance(_public, type) and _public.__module__ != __name__:
        _public.__module__ = __name__
    elif isinstance(_public, types.BuiltinFunctionType):
        globals()[_name] = _named(_public)
del _name, _public, functools, sys, types, Callable
