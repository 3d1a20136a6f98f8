"""Files: saving, listing and watching."""
import asyncio
import gc
import os
import select
import threading

import pytest

import pdfsettings
from pdfsettings import Change, ChangeKind, ConflictError

ONE = "<< /StartPage 1 >> setalembicorparams\n"


def test_a_save_refuses_what_others_changed(folder):
    settings = pdfsettings.open("press.joboptions")
    assert settings.file == folder / "press.joboptions" and not settings.stale()
    with settings.edit() as edit:
        edit["StartPage"] = 2
    (folder / "press.joboptions").write_text(ONE)
    assert settings.stale() and settings.modified
    with pytest.raises(ConflictError) as error:
        settings.save()
    assert error.value.file == folder / "press.joboptions" and error.value.code == "conflict"
    assert (folder / "press.joboptions").read_text() == ONE
    settings.save(overwrite=True)
    assert not settings.modified and pdfsettings.open("press.joboptions")["StartPage"] == 2
    (folder / "press.joboptions").write_text(ONE)
    settings.reload()
    assert settings == {"StartPage": 1}
    with pytest.raises(ConflictError):
        settings.save_as("office.joboptions", wait=0.5)
    settings.save_as(b"new.joboptions")
    assert settings.file == folder / "new.joboptions"


def test_a_plain_save_replaces_what_was_seen_only(folder):
    assert pdfsettings.save("plain", b"one", seen=None) == ()
    for seen in (None, "two"):
        with pytest.raises(ConflictError):
            pdfsettings.save("plain", "two", seen=seen)
    pdfsettings.save("plain", "two", seen=b"one")
    pdfsettings.save("plain", "three", seen=b"one", overwrite=True)
    pdfsettings.save("plain", pdfsettings.Document("four"))
    assert (folder / "plain").read_text() == "four"
    (folder / "plain").chmod(0o444)
    assert pdfsettings.is_read_only("plain") and not pdfsettings.is_read_only("missing")
    with pytest.raises(pdfsettings.ReadOnlyError):
        pdfsettings.save("plain", "five")


FAILURES = [
    (lambda: pdfsettings.open("missing"), FileNotFoundError), (lambda: pdfsettings.open("."), pdfsettings.FileError),
    (lambda: pdfsettings.open("nul\0"), ValueError), (lambda: pdfsettings.open("\ud800"), ValueError),
    (lambda: pdfsettings.open(5), TypeError), (lambda: pdfsettings.open(None), TypeError),
    (lambda: pdfsettings.Schema.open("missing"), pdfsettings.MissingFileError), (lambda: pdfsettings.parse(ONE).save(), ValueError),
    (lambda: pdfsettings.parse(ONE).reload(), ValueError), (lambda: pdfsettings.parse(ONE).save_as("a/b/c"), OSError),
    (lambda: pdfsettings.parse(ONE).save_as("x", wait=float("nan")), ValueError),
    (lambda: pdfsettings.save("x", ONE, wait=-1), ValueError), (lambda: pdfsettings.save("x", ONE, wait=float("inf")), ValueError),
    (lambda: pdfsettings.save("x", 5), TypeError), (lambda: pdfsettings.check(5), TypeError), (lambda: pdfsettings.watch(5), TypeError)]


@pytest.mark.parametrize("fail, error", FAILURES)
def test_what_cannot_be_done_raises(folder, fail, error):
    before = sorted(os.listdir())
    with pytest.raises(error):
        fail()
    assert sorted(os.listdir()) == before


def test_paths_are_any_bytes(folder):
    name = b"k\xff\xe4 .joboptions"
    pdfsettings.save(name, ONE)
    for path in (name, os.fsdecode(name), folder / os.fsdecode(name)):
        assert pdfsettings.open(path).file == folder / os.fsdecode(name)


def test_what_a_user_has_is_listed(folder):
    own = pdfsettings.user_folder()
    own.mkdir(parents=True, exist_ok=True)
    pdfsettings.open("press.joboptions").save_as(own / "My press.joboptions")
    [listed] = pdfsettings.list_settings(details=True)
    assert (listed.name, listed.file, listed.origin, listed.read_only) == ("My press", own / "My press.joboptions", "user", False)
    assert listed.modified == int(listed.file.stat().st_mtime) and not listed.hidden and listed.applications == {}
    listed.file.chmod(0o444)
    [listed] = pdfsettings.list_settings("An app", hidden=True, details=True)
    assert listed.read_only and len(listed.read_only_reasons) == 1 and listed.shadowed == ()
    assert pdfsettings.administrator_preferences().is_absolute() and pdfsettings.unusable_preferences() is None
    assert pdfsettings.administrator_folder() is None or pdfsettings.administrator_folder().is_absolute()
    assert isinstance(pdfsettings.check_preferences(), tuple)


def test_a_watcher_reports_changes_to_whoever_waits_for_its_descriptor(folder):
    with pdfsettings.watch("press.joboptions", folder, listed=True) as watcher:
        assert watcher.read() == () and not select.select([watcher], [], [], 0)[0]
        pdfsettings.save("press.joboptions", ONE)
        (folder / "new.joboptions").write_text(ONE)
        assert select.select([watcher], [], [])[0] == [watcher]
        assert set(watcher.read()) == {
            Change(ChangeKind.CHANGED, folder / "press.joboptions", "press"), Change(ChangeKind.ADDED, folder / "new.joboptions", "new")}
    watcher.close()
    assert watcher.closed
    for use in (watcher.fileno, watcher.read, lambda: watcher.add("x"), watcher.add_listed):
        with pytest.raises(ValueError, match="the watcher is closed"):
            use()
    assert not pdfsettings.may_miss_changes(folder)


def test_a_watcher_is_an_asynchronous_iterator_that_ends_when_closed(folder):
    async def changes(watcher):
        return [change.name async for change in watcher]

    async def main():
        watcher = pdfsettings.watch(folder)
        (folder / "a.joboptions").write_text(ONE)
        (folder / "b.joboptions").write_text(ONE)
        first, others = await asyncio.gather(anext(watcher), anext(watcher))
        assert {first.name, others.name} == {"a", "b"}
        reads, read = [], watcher.read
        watcher.read = lambda: reads.append(1) or read()
        idle = [asyncio.create_task(changes(watcher)) for _ in range(2)]
        (folder / "f.joboptions").write_text(ONE)
        for _ in range(50):
            await asyncio.sleep(0)
        assert len(reads) < 10
        for task in idle:
            task.cancel()
        (folder / "d.joboptions").write_text(ONE)
        (folder / "e.joboptions").write_text(ONE)
        assert {(await anext(watcher)).name, *(change.name for change in watcher.read())} == {"d", "e"}
        waiting = asyncio.create_task(changes(watcher))
        await asyncio.sleep(0)
        other = asyncio.create_task(changes(watcher))
        await asyncio.to_thread(watcher.close)
        assert watcher.closed and await waiting == await other == []
        with pytest.raises(StopAsyncIteration):
            await anext(watcher)

        watcher = pdfsettings.watch(folder)
        cancelled = asyncio.create_task(changes(watcher))
        await asyncio.sleep(0)
        cancelled.cancel()
        with pytest.raises(asyncio.CancelledError):
            await cancelled
        (folder / "c.joboptions").write_text(ONE)
        assert (await anext(watcher)).kind is ChangeKind.ADDED
        watcher.close()
    asyncio.run(main())


def test_a_watcher_is_closed_and_used_again_whatever_its_event_loop_does(folder):
    descriptors = len(os.listdir("/proc/self/fd"))
    for ends_loop in (False, True):
        watcher, loop = pdfsettings.watch(folder), asyncio.new_event_loop()
        waiting = loop.create_task(anext(watcher))
        loop.run_until_complete(asyncio.sleep(0))
        if ends_loop:
            loop.close()
            (folder / "a.joboptions").write_text(ONE)
            assert asyncio.run(anext(watcher)).name == "a"
        watcher.close()
        assert watcher.closed
        if not ends_loop:
            with pytest.raises(StopAsyncIteration):
                loop.run_until_complete(waiting)
            loop.close()
        del waiting
    gc.collect()
    assert len(os.listdir("/proc/self/fd")) == descriptors


@pytest.mark.parametrize("step", ["create_future", "add_reader"])
def test_closing_a_watcher_as_an_iteration_begins_ends_the_iteration(folder, step):
    async def main():
        loop, watcher = asyncio.get_running_loop(), pdfsettings.watch(folder)
        begin = getattr(loop, step)

        def closed_meanwhile(*arguments):
            thread = threading.Thread(target=watcher.close)
            thread.start()
            thread.join()
            return begin(*arguments)
        setattr(loop, step, closed_meanwhile)
        return await anext(watcher, None)
    assert asyncio.run(asyncio.wait_for(main(), 120)) is None
