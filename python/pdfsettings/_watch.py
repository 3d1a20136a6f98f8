"""Watching settings files, as an asynchronous iterator too."""

from __future__ import annotations

import asyncio
import contextlib
import os
from collections import deque
from collections.abc import Iterator
from types import TracebackType
from typing import Union

from . import _core
from ._types import Change

FileName = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]


class Watcher:
    """Reports what has become of settings files since the call before. It has no thread and never
    blocks: wait for its descriptor with ``selectors`` or an event loop, then call `read`; or iterate
    with ``async for change in watcher``, which ends when the watcher is closed. Several tasks and
    threads may read: each change comes to one of them, and changes of a file come in their order to
    a single reader.

    After `close`, and in a process made by ``fork``, what watches or reads raises ``ValueError``.
    `Watcher()` raises `FileError` if the user has too many of them."""

    def __init__(self) -> None:
        self._watcher = _core.ChangeWatcher()
        self._pending: deque[Change] = deque()
        self._waiting: set[_Waiting] = set()

    def add(self, file: FileName) -> None:
        """Watches a file. It need not exist, as no folder need; what is there now is no change.
        Raises `FileError`, for example if the user watches too many folders."""
        self._watcher.add(file)

    def add_folder(self, folder: FileName) -> None:
        """Watches the settings files in a folder. Raises as `add`."""
        self._watcher.add_folder(folder)

    def add_listed(self, application: str = "") -> None:
        """Watches everything that ``list_settings(application)`` shows. Raises as `add`."""
        self._watcher.add_listed(application)

    def fileno(self) -> int:
        """The descriptor, readable while there may be something to read that no iteration has read
        ahead. The watcher owns it."""
        return self._watcher.fileno()

    def read(self) -> tuple[Change, ...]:
        """What has changed since the last call, by file; first what an iteration has read ahead.
        Raises `FileError`; the next call then reports what this one would have."""
        changes = self._watcher.read()
        return (*self._read_ahead(), *changes)

    def _read_ahead(self) -> Iterator[Change]:
        with contextlib.suppress(IndexError):
            while True:
                yield self._pending.popleft()

    @property
    def closed(self) -> bool:
        """Whether it is closed."""
        return self._watcher.closed

    def close(self) -> None:
        """Ends the watcher, and the iterations that wait for it. May be called twice, and from any
        thread."""
        self._watcher.close()
        waiting, self._waiting = self._waiting, set()
        _wake_all(waiting)

    def __enter__(self) -> Watcher:
        return self

    def __exit__(
        self,
        kind: type[BaseException] | None,
        error: BaseException | None,
        trace: TracebackType | None,
    ) -> None:
        self.close()

    def __aiter__(self) -> Watcher:
        return self

    async def __anext__(self) -> Change:
        while not self.closed:
            with contextlib.suppress(IndexError):
                return self._pending.popleft()
            try:
                await self._wait()
                self._pending.extend(self.read())
                if self._pending:
                    _wake_all(self._waiting)
            except ValueError:
                if not self.closed:
                    raise
        raise StopAsyncIteration

    async def _wait(self) -> None:
        loop = asyncio.get_running_loop()
        waiting = loop, loop.create_future()
        # In this order: what another thread does meanwhile is seen below, or wakes this.
        self._waiting.add(waiting)
        try:
            if self._pending:
                return
            # The iteration's own: after close() the loop still has to forget it.
            descriptor = self._watcher.duplicate()
            try:
                loop.add_reader(descriptor, _wake, waiting[1])
                await waiting[1]
            finally:
                try:
                    if not loop.is_closed():
                        loop.remove_reader(descriptor)
                finally:
                    os.close(descriptor)
        finally:
            self._waiting.discard(waiting)


_Waiting = tuple[asyncio.AbstractEventLoop, "asyncio.Future[None]"]


def _wake_all(waiting: set[_Waiting]) -> None:
    for loop, ready in list(waiting):
        with contextlib.suppress(RuntimeError):  # of a loop that was closed before
            loop.call_soon_threadsafe(_wake, ready)


def _wake(future: asyncio.Future[None]) -> None:
    if not future.done():
        future.set_result(None)


def watch(*files: FileName, listed: bool = False, application: str = "") -> Watcher:
    """A `Watcher` of files and of the settings files in folders; with ``listed`` also of everything
    that ``list_settings(application)`` shows. A path is a folder if there is one now. Raises
    `FileError` as `Watcher`."""
    watcher = Watcher()
    for file in files:
        if os.path.isdir(file):
            watcher.add_folder(file)
        else:
            watcher.add(file)
    if listed:
        watcher.add_listed(application)
    return watcher
