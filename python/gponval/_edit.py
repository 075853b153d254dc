"""Changes made node by node."""

from __future__ import annotations

from typing import List, Tuple, Union

from gponval._errors import InputError

Value = Union[str, int, bool, None]


def lexical(value: Value) -> str:
    """The value as a file has it."""
    if isinstance(value, bool):
        return "true" if value else "false"
    if not isinstance(value, (str, int)):
        raise InputError(f"a value is a str, an int or a bool, not {type(value).__name__}")
    try:
        return str(value)
    except ValueError as error:
        raise InputError(f"the number is too long: {error}") from error


class Edit:
    """A change of single nodes, in the order in which it is written.

    >>> change = Edit().set("/config/service-port{16}/gpon/id", "1/1/1")
    >>> change = change.delete("/config/service-port{5}")

    A path is a keypath, ``/config/service-port{16}/upstream-rate``, or XPath with predicates,
    ``/config/service-port[id='16']/upstream-rate``. Each function returns the edit itself.
    """

    def __init__(self) -> None:
        self.steps: List[Tuple[str, str]] = []

    def set(self, path: str, value: Value = None) -> Edit:
        """Sets a leaf, or creates an entry or a container (without a value), with what is missing
        around it. The value of an encrypted leaf is clear text."""
        return self._add("set", path, value)

    def create(self, path: str, value: Value = None) -> Edit:
        """Like ``set``, but an error if the node exists already."""
        return self._add("create", path, value)

    def replace(self, path: str, value: Value = None) -> Edit:
        """Like ``set``, but the node and everything in it are replaced."""
        return self._add("replace", path, value)

    def delete(self, path: str) -> Edit:
        """Deletes a node; an error if it does not exist."""
        return self._add("delete", path, None)

    def remove(self, path: str) -> Edit:
        """Deletes a node if it exists."""
        return self._add("remove", path, None)

    def _add(self, operation: str, path: str, value: Value) -> Edit:
        if not isinstance(path, str):
            raise InputError(f"a path is a str, not {type(path).__name__}")
        self.steps.append((operation, path if value is None else f"{path}={lexical(value)}"))
        return self

    def __repr__(self) -> str:
        return f"<gponval.Edit of {len(self.steps)} steps>"
