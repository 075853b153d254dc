from typing import Any, Callable, Dict, List, Optional, Tuple, Type, Union

from gponval._errors import InputError

_Answer = Tuple[str, str, str, str, float]
Report = Tuple[str, List[_Answer], List[str], str]

def set_places(plugin: str, model: str) -> None: ...
def stop() -> None: ...
def set_input_error(error: Type[InputError]) -> None: ...
def points() -> List[Tuple[str, str, bool, int]]: ...

class Edit:
    def __init__(self, kind: str, text: Union[str, bytes], name: Union[str, bytes] = "") -> None: ...

class LinkLoad:
    path: str
    onus: int
    total: Optional[int]
    fixed: Optional[int]
    rejected: str

class LineProfileLoad:
    name: str
    total: int
    fixed: int
    dynamic_tconts: int
    static_tconts: int

class CardLoad:
    limits: Dict[str, Any]
    links: List[LinkLoad]
    line_profiles: List[LineProfileLoad]
    service_ports: int
    def fit(self, link: LinkLoad, line_profile: bytes) -> Tuple[Optional[int], str]: ...

class Card:
    def __init__(self, config: Edit, card: Optional[Edit]) -> None: ...
    def commit(
        self,
        edits: List[Edit],
        confirm: Callable[[List[_Answer]], bool],
        all: bool,
        only: List[bytes],
        keep: bool,
    ) -> Report: ...
    def request(
        self, name: bytes, keypath: bytes, value: Optional[bytes], edits: List[Edit]
    ) -> Report: ...
    def audit(self, edits: List[Edit]) -> Tuple[Report, CardLoad]: ...
    def changes(self, edits: List[Edit]) -> Tuple[str, str]: ...
    def print(self, format: str) -> str: ...
    def get(self, keypath: bytes) -> Tuple[List[str], bool, bool]: ...
    def load(self) -> CardLoad: ...
