"""Watching settings files, as an asynchronous iterator too."""

from __future__ import annotations

import asyncio
import os
from collections import deque
from types import TracebackType
from typing import Union

from . import _core
from ._types import Change

FileName = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]


class Watcher:
    """Reports what has become of settings files since the call before. It has no thread and never
    blocks: wait for its descriptor with ``selectors`` or an event loop, then call `read`; or iterate
    with ``async for change in watcher``, which ends when the watcher is closed.

    After `close`, and in a process made by ``fork``, every use raises ``ValueError``. `Watcher()`
    raises `FileError` if the user has too many of them."""

    def __init__(self) -> None:
        self._watcher = _core.ChangeWatcher()
        self._pending: deque[Change] = deque()
        self._waiting: tuple[asyncio.AbstractEventLoop, asyncio.Future[None]] | None = None
        self._ends = False

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
        """The descriptor, readable while there may be something to read. The watcher owns it."""
        return self._watcher.fileno()

    def read(self) -> tuple[Change, ...]:
        """What has changed since the last call, by file. Raises `FileError`; the next call then
        reports what this one would have."""
        return self._watcher.read()

    @property
    def closed(self) -> bool:
        """Whether it is closed."""
        return self._watcher.closed

    def close(self) -> None:
        """Ends the watcher, and the iteration that waits for it. May be called twice, and from any
        thread."""
        waiting, self._ends = self._waiting, True
        if waiting is None or waiting[0].is_closed():
            self._watcher.close()
        else:
            # The loop forgets the descriptor before it is closed.
            waiting[0].call_soon_threadsafe(_wake, waiting[1])

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
        while not self._ends:
            if self._pending:
                return self._pending.popleft()
            await self._wait()
            if not self._ends:
                self._pending.extend(self.read())
        if self._waiting is None:
            self._watcher.close()
        raise StopAsyncIteration

    async def _wait(self) -> None:
        if self._waiting is not None:
            raise RuntimeError("another task iterates over this watcher")
        loop = asyncio.get_running_loop()
        ready: asyncio.Future[None] = loop.create_future()
        descriptor = self.fileno()
        loop.add_reader(descriptor, _wake, ready)
        self._waiting = loop, ready
        try:
            await ready
        finally:
            loop.remove_reader(descriptor)
            self._waiting = None
            if self._ends:
                self._watcher.close()


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
