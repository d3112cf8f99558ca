import io
import os
import pickle
import threading
from concurrent.futures import ThreadPoolExecutor

import pytest

import odfmodel
from odfmodel.text import List, ListItem, P, Placeholder


def test_document_opens_from_path_bytes_and_file(letter, tmp_path):
    path = tmp_path / "letter.odt"
    letter.save(path)
    for source in (path, str(path), path.read_bytes(), bytearray(path.read_bytes()), io.BytesIO(path.read_bytes())):
        with odfmodel.open(source) as document:
            assert document.kind == "text" and document.text() == letter.text() and document.is_whole
    with path.open("rb") as file, odfmodel.open(file) as document:
        assert document.path is None and document.body[2].text == "Bye"
        with pytest.raises(ValueError):
            document.save()
    document = odfmodel.open(path)
    document.body[2].text = "See you"
    document.save()
    assert odfmodel.open(path).body[2].text == "See you" and repr(str(path))[1:-1] in repr(document)


@pytest.mark.parametrize("kind", ["text", "spreadsheet", "presentation", "drawing", "chart", "image", "formula",
                                  "master-text", "web-text"])
def test_new_document_of_each_kind_reopens_as_that_kind(kind, again):
    assert again(odfmodel.new(kind)).kind == kind


def test_wrong_calls_are_told():
    with pytest.raises(ValueError):
        odfmodel.new("letter")
    with pytest.raises(TypeError):
        odfmodel.open(5)
    with pytest.raises(TypeError):
        odfmodel.new("text").tobytes(speed=3)


def test_failures_are_exceptions_with_status_and_place(letter, tmp_path):
    with pytest.raises(FileNotFoundError):
        odfmodel.open(tmp_path / "none.odt")
    with pytest.raises(OSError):
        letter.save(tmp_path / "no" / "folder.odt")
    with pytest.raises(odfmodel.DamagedError) as junk:
        odfmodel.open(b"junk")
    assert junk.value.status == odfmodel.Status.NotAnArchive
    letter.members["content.xml"] = letter.members["content.xml"].replace(b"</text:p>", b"</text:q>", 1)
    damaged = letter.tobytes(allow_incomplete=True)
    with pytest.raises(odfmodel.DamagedError) as fault:
        odfmodel.open(damaged)
    assert (fault.value.status, fault.value.member) == (odfmodel.Status.Damaged, "content.xml")
    assert fault.value.line == 2 and fault.value.column > 100 and fault.value.notes
    document = odfmodel.open(damaged, recover=True)
    assert not document.is_whole and document.body.tag == "office:text" and document.notes
    with pytest.raises(odfmodel.Error):
        document.tobytes()
    assert odfmodel.open(document.tobytes(allow_incomplete=True)).is_whole


@pytest.mark.parametrize("make, kind", [
    (lambda: odfmodel.open(b"junk"), odfmodel.DamagedError), (lambda: odfmodel.new("text").save("/no/folder/a.odt"), odfmodel.FileError)])
def test_failure_goes_to_another_process_whole(make, kind):
    with pytest.raises(kind) as raised:
        make()
    error = raised.value
    copied = pickle.loads(pickle.dumps(error))
    assert type(copied) is kind and str(copied) == str(error) and copied.status == error.status and error.notes
    assert [(n.severity, n.member, n.line, n.column, n.text) for n in copied.notes] == [
        (n.severity, n.member, n.line, n.column, n.text) for n in error.notes]


class Slow(io.RawIOBase):
    """Takes 1000 bytes at a time."""
    data = b""

    def write(self, data):
        self.data += data[:1000]
        return min(len(data), 1000)


def test_document_is_saved_to_a_file_that_is_open(letter, tmp_path):
    memory, slow, path = io.BytesIO(), Slow(), tmp_path / "letter.odt"
    letter.save(memory)
    letter.save(slow, compression=1)
    with path.open("wb") as file:
        letter.save(file)
    for data in (memory.getvalue(), slow.data, path.read_bytes()):
        assert odfmodel.open(data).text() == letter.text()
    with pytest.raises(TypeError):
        letter.save(io.StringIO())


def test_member_that_is_missing_has_no_root(letter):
    with pytest.raises(KeyError):
        letter.root("none.xml")
    assert letter.root("content.xml") is letter.content


def test_password_is_needed_and_kept(letter, again):
    letter.set_password("secret")
    data = letter.tobytes()
    for password, status in [(None, "PasswordNeeded"), ("guess", "WrongPassword")]:
        with pytest.raises(odfmodel.PasswordError) as refused:
            odfmodel.open(data, password)
        assert refused.value.status.name == status
    document = odfmodel.open(data, "secret")
    assert document.is_encrypted and document.text() == letter.text()
    document.set_password(None)
    assert not again(document).is_encrypted


def test_fields_are_filled_and_those_held_live_on(letter, again):
    letter.body[0].append(Placeholder("<Name>", placeholder_type="text"))
    held = letter.find(Placeholder)
    assert letter.field_names() == ["Name"] and letter.fill("Name", "Lovelace") == 1 and letter.fill("No", 1) == 0
    assert again(letter).body[0].text == "Dear Ada,Lovelace" and letter.find(Placeholder) is None
    assert held.tag == "text:placeholder" and held.parent is None


def test_document_is_the_same_as_one_xml_file(letter):
    letter.body.append(List(ListItem(P("item"))))
    flat = letter.to_flat()
    assert flat.is_flat and odfmodel.open(flat.tobytes()).to_package().lines() == letter.lines() == [
        "Dear Ada,", "your  order No. 7 is here.", "Bye", letter.lines()[3]] and letter.lines()[3].endswith("item")


def test_members_are_a_mapping_of_bytes(letter, again):
    letter.members["notes/a.txt"] = b"abc"
    name = letter.add_picture(b"\x89PNG\r\n\x1a\n", "logo.png")
    opened = again(letter)
    assert opened.members["notes/a.txt"] == b"abc" and opened.members[name].startswith(b"\x89PNG")
    del opened.members["notes/a.txt"]
    assert "notes/a.txt" not in again(opened).members
    for missing in (lambda: opened.members["x"], lambda: opened.members.__delitem__("x")):
        with pytest.raises(KeyError):
            missing()


def test_progress_is_told_and_may_end_the_work(letter):
    told = []
    data = letter.tobytes(progress=lambda *state: told.append(state))
    assert told and all(done <= total for _, done, total in told if total)
    with pytest.raises(odfmodel.Cancelled):
        odfmodel.open(data, progress=lambda *_: False)
    with pytest.raises(ZeroDivisionError):
        odfmodel.open(data, progress=lambda *_: 1 // 0)


def test_same_time_gives_the_same_bytes(letter):
    assert letter.tobytes(fixed_time=10**9) == letter.tobytes(fixed_time=10**9)


def test_documents_on_many_threads_do_not_meet(letter):
    data = letter.tobytes()

    def work(number):
        document = odfmodel.open(data)
        document.replace("Ada", f"reader {number}")
        return odfmodel.open(document.tobytes()).body[0].text

    with ThreadPoolExecutor(8) as pool:
        assert list(pool.map(work, range(40))) == [f"Dear reader {n}," for n in range(40)]


def test_other_threads_run_and_are_kept_off_while_a_document_is_saved(letter):
    letter.body.extend(P(f"paragraph {n}") for n in range(1000))
    refused, saving, asked = [], threading.Event(), threading.Event()

    def ask():
        saving.wait(10)
        for use in (letter.text, letter.tobytes, lambda: letter.body, lambda: letter.body.append(P())):
            try:
                use()
            except RuntimeError as error:
                refused.append(str(error))
        asked.set()

    def progress(*_):
        saving.set()
        asked.wait(10)

    thread = threading.Thread(target=ask)
    thread.start()
    letter.tobytes(progress=progress)
    thread.join()
    assert refused == ["another call is working on this document"] * 4
    assert len(letter.body) == 1003


@pytest.mark.skipif("ODFMODEL_CORPUS" not in os.environ, reason="needs a folder of real documents")
def test_real_documents_walk_and_save():
    opened = 0
    for folder, _, files in os.walk(os.environ["ODFMODEL_CORPUS"]):
        for name in files:
            try:
                document = odfmodel.open(os.path.join(folder, name))
            except odfmodel.Error:
                continue
            opened += 1
            again = odfmodel.open(document.tobytes())
            for root in ("content", "styles", "meta", "flat", "formula"):
                old, new = getattr(document, root), getattr(again, root)
                if old is None:
                    continue
                assert [(e.tag, dict(e.attrib)) for e in old.iter()] == [(e.tag, dict(e.attrib)) for e in new.iter()]
    assert opened
