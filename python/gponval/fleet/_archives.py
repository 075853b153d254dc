"""Archives, which may come from anywhere. Nothing of them is ever written to disk: members are read
into memory, one at a time, and a name in an archive is only a name."""

from __future__ import annotations

import bz2
import gzip
import io
import lzma
import os
import tarfile
import zipfile
import zlib
from typing import BinaryIO, Iterator, List, Optional, Set, Tuple, Union, cast

LONGEST_CONFIG = 64_000_000
LONGEST_CARD = 64_000
MOST_MEMBERS = 1_000_000
_LARGEST_DICTIONARY = 128_000_000
_PIECE = 65536
# The headers of one member are kept in memory, and may say that they are of any length.
_LONGEST_HEADERS = 1_000_000
# Compressed well, cards shrink to a hundredth; what shrinks more than gzip can is made to do harm.
_MOST_EXPANSION = 2_000
_TOO_MUCH = "the archive expands to too much"

ZIP_ERRORS = (zipfile.BadZipFile, OSError, ValueError, NotImplementedError, EOFError, zlib.error)
TAR_ERRORS = (tarfile.TarError, OSError, ValueError, EOFError, zlib.error, lzma.LZMAError)


class Unreadable(Exception):
    """Why one file cannot be read; ``str`` of it is for the user."""


Content = Union[bytes, Unreadable]


def read_limited(file: BinaryIO, limit: int) -> bytes:
    content = bytearray()
    while len(content) <= limit:
        more = file.read(_PIECE)
        if not more:
            return bytes(content)
        content += more
    raise Unreadable(f"longer than {limit:,} bytes")


def is_archive(name: str) -> bool:
    return is_zip(name) or is_tar(name)


def is_zip(name: str) -> bool:
    return name.lower().endswith(".zip")


def is_tar(name: str) -> bool:
    endings = (".tar", ".tar.gz", ".tgz", ".tar.bz2", ".tbz2", ".tar.xz", ".txz")
    return name.lower().endswith(endings)


class Zip:
    """A zip archive. Its directory is at its end, so members are read in any order."""

    def __init__(self, path: str) -> None:
        self._path = path
        with zipfile.ZipFile(path) as archive:
            members = archive.infolist()
        if len(members) > MOST_MEMBERS:
            raise Unreadable(f"more than {MOST_MEMBERS:,} members")
        self.names = [member.filename for member in members if not member.is_dir()]

    def contents(self, wanted: Set[str], limit: int) -> Iterator[Tuple[str, Content]]:
        left = _most_bytes(self._path)
        with zipfile.ZipFile(self._path) as archive:
            for member in archive.infolist():
                if member.filename not in wanted:
                    continue
                content = _zip_member(archive, member, limit)
                left -= len(content) if isinstance(content, bytes) else limit
                yield member.filename, content if left >= 0 else Unreadable(_TOO_MUCH)


def _zip_member(archive: zipfile.ZipFile, member: zipfile.ZipInfo, limit: int) -> Content:
    # Other methods may take gigabytes of memory.
    if member.compress_type not in (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED):
        return Unreadable("compressed by another method than deflate")
    if member.flag_bits & 1:
        return Unreadable("encrypted")
    try:
        with archive.open(member) as file:
            return read_limited(cast(BinaryIO, file), limit)
    except Unreadable as error:
        return error
    except ZIP_ERRORS as error:
        return Unreadable(f"damaged: {error}")


class Tar:
    """A tar archive, maybe compressed. It is read from its begin to its end, each time."""

    def __init__(self, path: str) -> None:
        self._path = path
        self.names: List[str] = []
        self._damage = ""
        try:
            for member in self._members():
                if not member[1].isdir():
                    self.names.append(member[1].name)
        except TAR_ERRORS as error:
            if not self.names:
                raise
            self._damage = str(error)

    def contents(self, wanted: Set[str], limit: int) -> Iterator[Tuple[str, Content]]:
        try:
            for archive, member in self._members():
                if member.name in wanted and not member.isdir():
                    yield member.name, _tar_member(archive, member, limit)
        except TAR_ERRORS as error:
            self._damage = str(error)

    @property
    def damage(self) -> str:
        """Why the archive could not be read to its end, or empty."""
        return self._damage

    def _members(self) -> Iterator[Tuple[tarfile.TarFile, tarfile.TarInfo]]:
        with open(self._path, "rb") as compressed:
            file = _Bounded(_decompressed(compressed), _most_bytes(self._path))
            with tarfile.open(fileobj=cast(BinaryIO, file), mode="r:") as archive:
                for count, member in enumerate(archive):
                    if count >= MOST_MEMBERS:
                        raise tarfile.ReadError(f"more than {MOST_MEMBERS:,} members")
                    file.begin_content()
                    yield archive, member
                    file.begin_headers()
                    archive.members = []  # type: ignore[attr-defined]  # it would keep them all
            file.check_end()


def _tar_member(archive: tarfile.TarFile, member: tarfile.TarInfo, limit: int) -> Content:
    if not member.isreg() or member.issparse():
        return Unreadable("a link or a device in the archive, not a file")
    if member.size > limit:
        return Unreadable(f"longer than {limit:,} bytes")
    file = archive.extractfile(member)
    if file is None:
        return Unreadable("not a file")
    with file:
        content = read_limited(cast(BinaryIO, file), limit)
    return content if len(content) == member.size else Unreadable("damaged: cut off")


def _most_bytes(path: str) -> int:
    return LONGEST_CONFIG + _MOST_EXPANSION * os.path.getsize(path)


def _decompressed(file: BinaryIO) -> BinaryIO:
    magic = file.read(6)
    file.seek(0)
    if magic.startswith(b"\x1f\x8b"):
        return cast(BinaryIO, gzip.GzipFile(fileobj=file))
    if magic.startswith(b"BZh"):
        return cast(BinaryIO, bz2.BZ2File(file))
    if magic.startswith(b"\xfd7zXZ\0"):
        return cast(BinaryIO, io.BufferedReader(_Xz(file)))
    return file


class _Xz(io.RawIOBase):
    """Like lzma.LZMAFile, which would take as much memory as the file asks for."""

    def __init__(self, file: BinaryIO) -> None:
        self._file = file
        self._decompressor = self._new()

    @staticmethod
    def _new() -> lzma.LZMADecompressor:
        return lzma.LZMADecompressor(lzma.FORMAT_XZ, memlimit=_LARGEST_DICTIONARY)

    def readable(self) -> bool:
        return True

    def readinto(self, buffer: bytearray) -> int:  # type: ignore[override]
        while not self._decompressor.eof:
            more = self._file.read(65536) if self._decompressor.needs_input else b""
            if self._decompressor.needs_input and not more:
                raise EOFError("cut off")
            content = self._decompressor.decompress(more, len(buffer))
            if content:
                buffer[: len(content)] = content
                return len(content)
        return 0


class _Bounded:
    """A tar file that is only read and skipped forward, with limits on what it takes."""

    def __init__(self, file: BinaryIO, most: int) -> None:
        self._file = file
        self._most = most
        self._position = 0
        self._last = b""
        self._headers_left: Optional[int] = _LONGEST_HEADERS

    def begin_headers(self) -> None:
        self._headers_left = _LONGEST_HEADERS

    def begin_content(self) -> None:
        self._headers_left = None

    def check_end(self) -> None:
        """tarfile takes a damaged header for the end of the archive."""
        if self._last.strip(b"\0"):
            raise tarfile.ReadError("damaged, or cut off")

    def read(self, size: int = -1) -> bytes:
        if self._headers_left is not None:
            self._headers_left -= size
            if size < 0 or self._headers_left < 0:
                raise tarfile.ReadError("the headers of a member are too long")
        self._last = self._file.read(size)
        self._advance(len(self._last))
        return self._last

    def tell(self) -> int:
        return self._position

    def seek(self, position: int) -> None:
        while self._position < position:
            skipped = len(self._file.read(min(position - self._position, _PIECE)))
            if skipped == 0:
                raise tarfile.ReadError("cut off")
            self._advance(skipped)

    def _advance(self, size: int) -> None:
        self._position += size
        if self._position > self._most:
            raise tarfile.ReadError(_TOO_MUCH)
