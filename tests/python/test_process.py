"""Threads, forks, sub-interpreters, the end of a program, and leaks."""
import concurrent.futures
import copy
import copyreg
import ctypes
import fcntl
import gc
import os
import pickle
import random
import signal
import subprocess
import sys
import threading

import pytest

import pdfsettings

ONE = "<< /ColorImageResolution 300 /NeverEmbed [ /A ] >> setalembicorparams\n"
# Enough for a machine that does much else; only what hangs takes as long.
MUCH = 120


def run(program, *arguments):
    """What another process writes that runs a program; it must end well."""
    done = subprocess.run(
        [sys.executable, "-X", "faulthandler", "-c", program, *arguments], capture_output=True, text=True, timeout=MUCH)
    assert (done.returncode, done.stderr) == (0, "")
    return done.stdout


def together(work, count=8):
    """The results of work(number), each on a thread of its own."""
    with concurrent.futures.ThreadPoolExecutor(count) as pool:
        return list(pool.map(work, range(count), timeout=MUCH))


def test_reading_a_file_lets_other_threads_run():
    reader, writer = os.pipe()
    with concurrent.futures.ThreadPoolExecutor() as pool:
        settings = pool.submit(pdfsettings.open, f"/dev/fd/{reader}")
        # Only because the reading thread does not keep the interpreter's lock do we come here.
        os.write(writer, ONE.encode())
        os.close(writer)
        assert settings.result(MUCH)["ColorImageResolution"] == 300
    os.close(reader)


def test_eight_threads_read_and_validate_a_hundred_files(tmp_path):
    for number in range(100):
        (tmp_path / f"{number}.joboptions").write_text(ONE.replace("300", str(100 + number)))

    def read(thread):
        total = 0
        for number in range(100):
            settings = pdfsettings.open(tmp_path / f"{(number + thread * 13) % 100}.joboptions")
            assert settings.validate() == () == pdfsettings.check(settings) and settings.value("NeverEmbed", list) == ["A"]
            total += settings["ColorImageResolution"]
        return total
    assert together(read) == [sum(range(100, 200))] * 8


def test_threads_that_share_an_object_only_get_errors_of_the_module(tmp_path):
    file = tmp_path / "shared.joboptions"
    file.write_text(ONE)
    shared, edit, watcher = pdfsettings.open(file), pdfsettings.open(file).edit(), pdfsettings.watch(tmp_path)

    def change(settings):
        with settings.edit() as own:
            own["ColorImageResolution"] = random.randrange(90, 2600)
    uses = [
        change, lambda settings: settings.as_dict(), lambda settings: settings.validate(), lambda settings: settings.save(),
        lambda settings: settings.reload(), lambda settings: settings.value("ColorImageResolution", int), lambda settings: settings.stale(),
        lambda settings: list(settings.items()), lambda settings: pdfsettings.explain(settings), lambda settings: settings.text,
        lambda _: edit.append("NeverEmbed", random.choice("ABC")), lambda _: edit.result["NeverEmbed"], lambda _: edit.commit(),
        lambda _: watcher.read(), lambda _: watcher.add(tmp_path / "x"), lambda settings: settings.save(overwrite=True)]

    def misuse(number):
        chance = random.Random(number)
        for _ in range(150):
            try:
                chance.choice(uses)(shared)
            except (pdfsettings.Error, ValueError):
                pass
        if number == 0:
            watcher.close()
    together(misuse)
    assert 1 <= pdfsettings.open(file)["ColorImageResolution"] <= 2400


def test_a_fork_waits_for_validations_and_its_process_works(tmp_path):
    settings = pdfsettings.parse(ONE)
    watcher = pdfsettings.watch(tmp_path)
    ends = threading.Event()

    def validate(_):
        own = pdfsettings.parse(ONE)
        while not ends.is_set():
            settings.validate()
            with own.edit() as edit:
                edit["NeverEmbed"] = []

    def use_in_child():
        signal.alarm(MUCH)
        with pytest.raises(ValueError, match="belongs to the process"):
            watcher.read()
        settings.validate()
        with settings.edit() as edit:
            edit["ColorImageResolution"] = 72
        with pdfsettings.watch(tmp_path) as own:
            assert own.read() == ()
        pdfsettings.list_settings()

    with concurrent.futures.ThreadPoolExecutor() as pool:
        threads = [pool.submit(validate, number) for number in range(4)]
        try:
            for _ in range(25):
                child = os.fork()
                if child == 0:
                    status = 1
                    try:
                        use_in_child()
                        status = 0
                    finally:
                        os._exit(status)
                assert os.waitpid(child, 0)[1] == 0
        finally:
            ends.set()
        for thread in threads:
            thread.result(MUCH)


FORKING = """
import os, sys, threading
used = []
lock = threading.Lock()
def use(then=lambda: None):
    for settings in used:
        settings.validate()
    then()
os.register_at_fork(before=lambda: use(lock.acquire), after_in_parent=lambda: use(lock.release), after_in_child=lambda: use(lock.release))
import pdfsettings
used.append(pdfsettings.parse(sys.argv[1]))
def work():
    while True:
        with lock:
            use()
threading.Thread(target=work, daemon=True).start()
for _ in range(50):
    if os.fork() == 0:
        os._exit(0)
    assert os.wait()[1] == 0
"""


def test_handlers_of_a_fork_use_settings_though_they_are_older_than_the_module():
    run(FORKING, ONE)


def test_signals_are_handled_while_a_save_waits(tmp_path):
    held, file = [], tmp_path / "one.joboptions"
    file.write_text(ONE)
    settings = pdfsettings.open(file)

    def hold():
        held.append(os.open(tmp_path, os.O_RDONLY))
        fcntl.flock(held[0], fcntl.LOCK_EX)
    former = signal.signal(signal.SIGALRM, lambda *_: os.close(held.pop()))
    try:
        for save in (settings.save, lambda wait: settings.save_as(file, overwrite=True, wait=wait), lambda wait: pdfsettings.save(file, ONE, wait=wait)):
            hold()
            signal.setitimer(signal.ITIMER_REAL, 0.05)
            assert save(wait=MUCH) == ()
        hold()
        with pytest.raises(pdfsettings.BusyError):
            settings.save(wait=0.3)
        os.close(held.pop())
    finally:
        signal.signal(signal.SIGALRM, former)


def test_every_stream_takes_what_a_problem_or_an_error_says(tmp_path):
    file = tmp_path / "k\udcff.joboptions"
    file.write_bytes(b"<< /ColorImageDepth /\xff /K\xff\x1b 1 >> setalembicorparams")
    with pytest.raises(pdfsettings.NoValueError) as error:
        pdfsettings.open(file)["\udcff"]
    with pytest.raises(pdfsettings.MissingFileError) as missing:
        pdfsettings.open("/missing\udcff")
    with pytest.raises(pdfsettings.ValidationError) as rejected, pdfsettings.open(file).edit() as edit:
        edit["GrayImageDepth"] = pdfsettings.Name("\udcfe")
    for shown in (*pdfsettings.check(file, strict=True), error.value, missing.value, rejected.value):
        f"{shown} {shown.message} {shown.place}".encode()
        assert "\x1b" not in str(shown)
    assert repr(pdfsettings.open(file)).endswith("/k\\xff.joboptions>") and error.value.file == file


MISUSES = [
    lambda: setattr(pdfsettings.Settings(), "__class__", pdfsettings.Document), lambda: setattr(pdfsettings.Settings, "text", ""),
    lambda: type("Own", (pdfsettings.Settings,), {}), lambda: pdfsettings.Settings.__new__(pdfsettings.Settings),
    lambda: object.__new__(pdfsettings.Schema), lambda: pdfsettings.Schema(), lambda: pdfsettings.Edit(), lambda: pdfsettings.Edit.__base__(),
    lambda: copy.copy(pdfsettings.Settings().edit()), lambda: pickle.dumps(pdfsettings.Schema.standard(), 0),
    lambda: pickle.dumps(pdfsettings.Settings(), 5), lambda: copyreg.__newobj__(pdfsettings.Document)]


@pytest.mark.parametrize("misuse", MISUSES)
def test_no_object_comes_to_be_without_its_contents(misuse):
    with pytest.raises(TypeError):
        misuse()


IN_SUB = """
import sys, _xxsubinterpreters as interpreters
if sys.argv[1] == "main first":
    import pdfsettings
    settings = pdfsettings.Settings({"K": [1]})
for _ in range(3):
    other = interpreters.create()
    try:
        interpreters.run_string(other, "import pdfsettings")
        print("imported")
    except interpreters.RunFailedError as error:
        print(error)
    interpreters.destroy(other)
import pdfsettings
print(pdfsettings.Settings({"StartPage": 1}).validate(), pdfsettings.Name("A"))
"""


@pytest.mark.parametrize("order", ["main first", "sub first"])
def test_a_sub_interpreter_is_refused(order):
    lines = run(IN_SUB, order).splitlines()
    reason = "<class 'ImportError'>: pdfsettings works in the main interpreter only: use a process in place of a sub-interpreter"
    assert lines == [reason] * 3 + ["() A"]


# What is alive when the program ends, on the main thread and on others, in any order.
AT_END = """
import atexit, sys, threading
import pdfsettings
folder = sys.argv[1]
settings = pdfsettings.open(folder + "/one.joboptions")
kept = [settings, settings.edit(), iter(settings), settings.items(), pdfsettings.watch(folder), pdfsettings.Schema.standard(), settings.document]
kept.append(kept)
started = threading.Barrier(5)
class Late:
    def __del__(self, settings=settings):
        for _ in range(100):
            settings.value("ColorImageResolution", int), settings.stale(), settings.edit(), settings.document.problems
late = Late()
def work():
    pdfsettings.check(settings)
    started.wait()
    while True:
        pdfsettings.open(folder + "/one.joboptions").validate()
        pdfsettings.list_settings()
        settings.as_dict()
for _ in range(4):
    threading.Thread(target=work, daemon=True).start()
started.wait()
atexit.register(lambda: print(len(settings.validate()), len(list(kept[2]))))
"""


def test_a_program_ends_while_threads_work_and_objects_live(tmp_path):
    (tmp_path / "one.joboptions").write_text(ONE)
    for _ in range(12):
        assert run(AT_END, str(tmp_path)) == "0 2\n"


class Allocated(ctypes.Structure):
    """What mallinfo2() returns."""

    _fields_ = [(name, ctypes.c_size_t) for name in "arena ordblks smblks hblks hblkhd usmblks fsmblks uordblks fordblks keepcost".split()]


def allocated():
    """The bytes that the C library has handed out, and the blocks of Python."""
    mallinfo = ctypes.CDLL(None).mallinfo2
    mallinfo.restype = Allocated
    gc.collect()
    info = mallinfo()
    return info.uordblks + info.hblkhd, sys.getallocatedblocks()


def test_ten_thousand_rounds_leak_nothing(tmp_path):
    (tmp_path / "one.joboptions").write_text(ONE)
    schema = pdfsettings.Schema.parse("< PDFSettings < optional < StartPage < type integer max 3 default 1 > > > >")

    def once():
        settings = pdfsettings.open(tmp_path / "one.joboptions", schema)
        for failing in ("StartPage", "A B", "StartPage/0/1"):
            try:
                with settings.edit() as edit:
                    edit.append("NeverEmbed", pdfsettings.Name("B"))
                    edit[failing] = {"K": [1, 0.5, b"\xff", "text", pdfsettings.HexString("00"), {"L": True}]}
            except (pdfsettings.Error, ValueError):
                pass
        with settings.edit() as edit:
            edit["StartPage"], edit["More"] = 2, {"K": [1, 0.5, b"\xff", "text", pdfsettings.HexString("00")]}
        settings.as_dict(), dict(settings), settings.value("StartPage", int), settings.text, iter(settings), settings.edit()
        for fail in (lambda: pdfsettings.open("/missing"), lambda: pdfsettings.parse("<<"), lambda: settings["X"], lambda: settings.save(wait=-1)):
            try:
                fail()
            except (pdfsettings.Error, ValueError):
                pass
        pdfsettings.compare(settings, pdfsettings.repair("<< /A TRUE" and settings).document), schema.find("StartPage"), settings.document.entries
        pdfsettings.check(settings, strict=True), pdfsettings.explain(settings), pdfsettings.Settings({"A": [1]}, schema=schema)

    for _ in range(500):
        once()
    before = allocated()
    for _ in range(10000):
        once()
    after = allocated()
    # Caches and the allocator's own blocks move a little; a leak of one byte a round is 10,000.
    assert after[0] - before[0] < 8000 and after[1] - before[1] < 500
