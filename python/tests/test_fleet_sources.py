"""What an audit finds in files, folders, archives and manifests."""

import gzip
import io
import lzma
import os
import tarfile
import zipfile
import zlib

import pytest

from gponval.fleet import Fleet, Job, Record, Trouble


def items(*paths, manifest=None):
    return list(Fleet([str(path) for path in paths], manifest and str(manifest)).jobs())


def jobs(*paths, manifest=None):
    found = items(*paths, manifest=manifest)
    assert all(isinstance(item, Job) for item in found), found
    return {item.name: (item.config, item.card) for item in found}


def unreadable(*paths, manifest=None):
    found = [item for item in items(*paths, manifest=manifest) if isinstance(item, Record)]
    assert {record.status for record in found} <= {"unreadable"}
    return {record.name: record.why for record in found}


def write_files(folder, **files):
    for name, text in files.items():
        file = folder / name.replace("__", "/").replace("_", ".")
        file.parent.mkdir(exist_ok=True, parents=True)
        file.write_bytes(text)
    return folder


def add(archive, name, content=b"", **kind):
    member = tarfile.TarInfo(name)
    member.size = len(content)
    for key, value in kind.items():
        setattr(member, key, value)
    archive.addfile(member, io.BytesIO(content))


@pytest.fixture
def folder(tmp_path):
    files = {"a_xml": b"A", "a_card": b"card of a", "b_json": b"B", "c__d_xml": b"D"}
    return write_files(tmp_path / "cards", **files, read_me=b"no card")


FOLDER = {"a.xml": (b"A", b"card of a"), "b.json": (b"B", None), "c/d.xml": (b"D", None)}


def test_a_folder_has_cards_and_their_descriptions(folder):
    assert jobs(folder) == FOLDER


def test_a_file_is_a_card_whatever_its_name(folder):
    assert jobs(folder / "a.xml") == {"a.xml": (b"A", b"card of a")}
    assert jobs(folder / "read.me") == {"read.me": (b"no card", None)}


def test_cards_of_several_paths_have_the_path_in_their_names(folder):
    both = jobs(folder / "c", folder / "a.xml")
    assert set(both) == {f"{folder}/c/d.xml", f"{folder}/a.xml"}


@pytest.mark.parametrize("ending", ["tar", "tar.gz", "tar.bz2", "tar.xz", "tgz", "zip"])
def test_an_archive_is_like_its_folder(folder, tmp_path, ending):
    archive = tmp_path / f"cards.{ending}"
    if ending == "zip":
        with zipfile.ZipFile(archive, "w", zipfile.ZIP_DEFLATED) as file:
            for path in sorted(folder.rglob("*")):
                file.write(path, path.relative_to(folder))
    else:
        kind = {"tgz": "gz", "tar": ""}.get(ending, ending[4:])
        with tarfile.open(archive, f"w:{kind}") as file:
            file.add(folder, ".")
    assert jobs(archive) == FOLDER
    assert len(Fleet([str(archive)])) == 3


@pytest.mark.parametrize("ending", ["csv", "yaml"])
def test_a_manifest_names_cards_and_descriptions(folder, tmp_path, ending):
    manifest = tmp_path / f"fleet.{ending}"
    manifest.write_text(
        "name,config,card\nNorth,a.xml,\nSouth,c/d.xml,south.card\nGone,e.xml,\n"
        if ending == "csv"
        else "- {name: North, config: a.xml}\n- {name: South, config: ./c/d.xml, card: south.card}\n"
        "- {name: Gone, config: e.xml}\n"
    )
    (tmp_path / "south.card").write_bytes(b"card of the south")
    found = items(folder, manifest=manifest)
    assert [item.name for item in found] == ["Gone", "North", "South"]
    assert found[0].why == "there is no e.xml"
    assert (found[1].config, found[1].card) == (b"A", b"card of a")
    assert (found[2].config, found[2].card) == (b"D", b"card of the south")


def test_without_a_path_the_cards_are_beside_the_manifest(folder):
    (folder / "fleet.csv").write_text("config\nc/d.xml\n")
    assert jobs(manifest=folder / "fleet.csv") == {"c/d.xml": (b"D", None)}


def test_a_configuration_may_be_on_several_cards(folder):
    (folder / "fleet.csv").write_text("name,config,card\n1,a.xml,\n2,a.xml,a.card\n1,b.json,\n")
    assert set(jobs(manifest=folder / "fleet.csv")) == {"1", "2", "1#2"}


@pytest.mark.parametrize(
    ("name", "text", "words"),
    [
        ("m.csv", "config,crad\na.xml,b\n", "'crad' is none of name, config, card"),
        ("m.csv", "name\na.xml\n", "config is missing"),
        ("m.csv", 'config\n"a', "no CSV"),
        ("m.csv", b"\xff\xfe", "cannot read"),
        ("m.yaml", "a: [", "no YAML"),
        ("m.yaml", "a: b", "no list of cards"),
        ("m.yaml", "- a", "no mapping"),
        ("m.yaml", "- config: [a]", "config is no text"),
    ],
)
def test_a_wrong_manifest_is_trouble(tmp_path, name, text, words):
    (tmp_path / name).write_bytes(text if isinstance(text, bytes) else text.encode())
    with pytest.raises(Trouble, match=words):
        items(manifest=tmp_path / name)


def test_a_path_that_does_not_exist_is_trouble(tmp_path):
    with pytest.raises(Trouble, match="there is no such file"):
        items(tmp_path / "none")


def test_what_is_no_file_is_unreadable(tmp_path):
    os.mkfifo(tmp_path / "pipe.xml")
    (tmp_path / "gone.xml").symlink_to(tmp_path / "nowhere")
    (tmp_path / "a.xml").write_bytes(b"A")
    (tmp_path / "a.card").symlink_to("/dev/zero")
    assert unreadable(tmp_path) == {
        "pipe.xml": "not a file",
        "gone.xml": "cannot read: No such file or directory",
        "a.xml": "card description: not a file",
    }


def test_a_configuration_has_a_greatest_length(tmp_path):
    with open(tmp_path / "a.xml", "wb") as file:
        file.truncate(70_000_000)
    assert unreadable(tmp_path) == {"a.xml": "longer than 64,000,000 bytes"}


def test_a_name_may_be_any_bytes(tmp_path):
    (tmp_path / os.fsdecode(b"a\xff.xml")).write_bytes(b"A")
    assert jobs(tmp_path) == {"a\\xff.xml": (b"A", None)}


def test_names_in_an_archive_are_only_names(tmp_path):
    """Nothing is written, and no file outside the archive is read."""
    (tmp_path / "outside.card").write_bytes(b"secret")
    path = tmp_path / "in" / "cards.tar"
    path.parent.mkdir()
    with tarfile.open(path, "w") as archive:
        add(archive, "../outside.xml", b"A")
        add(archive, "/etc/b.xml", b"B")
        add(archive, "link.xml", type=tarfile.SYMTYPE, linkname="/etc/passwd")
        add(archive, "hard.xml", type=tarfile.LNKTYPE, linkname="../outside.card")
        add(archive, "device.xml", type=tarfile.CHRTYPE, devmajor=1, devminor=5)
        add(archive, "pipe.xml", type=tarfile.FIFOTYPE)
    before = sorted(tmp_path.rglob("*"))
    found = items(path)
    good = {item.name: (item.config, item.card) for item in found if isinstance(item, Job)}
    assert good == {"../outside.xml": (b"A", None), "/etc/b.xml": (b"B", None)}
    bad = {item.name: item.why for item in found if isinstance(item, Record)}
    assert set(bad) == {"link.xml", "hard.xml", "device.xml", "pipe.xml"}
    assert set(bad.values()) == {"a link or a device in the archive, not a file"}
    assert sorted(tmp_path.rglob("*")) == before


def test_members_of_the_same_name_are_all_audited(tmp_path):
    with tarfile.open(tmp_path / "cards.tar", "w") as archive:
        add(archive, "a.xml", b"1")
        add(archive, "a.xml", b"2")
    assert jobs(tmp_path / "cards.tar") == {"a.xml": (b"1", None), "a.xml#2": (b"2", None)}


def test_a_member_that_expands_to_too_much_is_a_row(tmp_path):
    with zipfile.ZipFile(tmp_path / "cards.zip", "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("bomb.xml", b"\0" * 65_000_000)
        archive.writestr("a.xml", b"A")
    assert unreadable(tmp_path / "cards.zip") == {"bomb.xml": "longer than 64,000,000 bytes"}
    with tarfile.open(tmp_path / "cards.tgz", "w:gz") as archive:
        add(archive, "bomb.xml", b"\0" * 65_000_000)
        add(archive, "a.xml", b"A")
    assert unreadable(tmp_path / "cards.tgz") == {"bomb.xml": "longer than 64,000,000 bytes"}


def test_an_encrypted_or_strangely_compressed_member_is_a_row(tmp_path):
    with zipfile.ZipFile(tmp_path / "cards.zip", "w", zipfile.ZIP_LZMA) as archive:
        archive.writestr("a.xml", b"A")
    assert "another method" in unreadable(tmp_path / "cards.zip")["a.xml"]


def header(name, size, kind):
    member = tarfile.TarInfo(name)
    member.size, member.type = size, kind
    return member.tobuf(tarfile.GNU_FORMAT)


@pytest.mark.parametrize(
    ("name", "content", "words"),
    [
        ("empty.tar", b"", "empty"),
        ("text.tar", b"no archive" * 100, "no archive"),
        ("text.zip", b"no archive" * 100, "no archive"),
        ("cut.tar.gz", gzip.compress(b"\1" * 10_000)[:20], "no archive"),
        ("pax.tar", header("x", 8_000_000_000, tarfile.XHDTYPE), "headers of a member are too long"),
        ("long.tar", header("x", 8_000_000_000, tarfile.GNUTYPE_LONGNAME), "are too long"),
    ],
)
def test_a_broken_archive_is_a_row(tmp_path, name, content, words):
    (tmp_path / name).write_bytes(content)
    (why,) = unreadable(tmp_path / name).values()
    assert words in why


def test_what_precedes_the_damage_of_an_archive_is_audited(tmp_path):
    path = tmp_path / "cards.tar"
    with tarfile.open(path, "w") as archive:
        add(archive, "a.xml", b"A")
        add(archive, "b.xml", b"B" * 5000)
    whole = path.read_bytes()
    for cut in (whole[:1024] + b"x" * 1024, whole[:3000]):
        path.write_bytes(cut)
        found = items(path)
        assert found[0] == Job("a.xml", b"A")
        assert str(path) in {item.name for item in found[1:]}
        assert {item.status for item in found[1:]} == {"unreadable"}


def test_an_xz_archive_cannot_ask_for_gigabytes(tmp_path):
    content = bytearray(lzma.compress(b"\0" * 10240))
    # The size of the dictionary is a byte of the block's header, which has a checksum.
    content[16] = 39
    end = 12 + (content[12] + 1) * 4
    content[end - 4 : end] = zlib.crc32(content[12 : end - 4]).to_bytes(4, "little")
    (tmp_path / "cards.tar.xz").write_bytes(content)
    (why,) = unreadable(tmp_path / "cards.tar.xz").values()
    assert "emory" in why
