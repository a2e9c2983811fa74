"""The zol protocol's messages as plain Python objects of the JSON form's
shape: dict, list, int, float, str, bool and None, {"hex": ...} for octets
that are not printable."""

from typing import Any, BinaryIO, Iterator, List, Optional, Union

# bytes, bytearray, memoryview or any object with the buffer protocol
Bytes = Union[bytes, bytearray, memoryview]
# dict, list, int, float, str, bool or None, nested as the JSON form nests
Value = Any

__version__: str

class DecodeError(ValueError):
    """Bytes that do not decode: the library's failure line and the line
    that names the message and where decoding stopped."""

    code: Optional[int]
    offset: Optional[int]
    def __init__(self, text: str, code: Optional[int] = ..., offset: Optional[int] = ...) -> None: ...

class DecodeWarning(UserWarning):
    """A bad stretch that messages(keep_going=True) skipped, or the library's
    warning about a message that decoded."""

    code: Optional[int]
    offset: Optional[int]
    def __init__(self, text: str, code: Optional[int] = ..., offset: Optional[int] = ...) -> None: ...

class EncodeError(ValueError):
    """A value that does not fit its type, with the place named as the JSON
    form names it."""

class Messages(Iterator[Value]):
    """The iterator that messages() gives."""

    offset: int
    length: int
    type: Optional[str]
    good: int
    bad: int
    def __iter__(self) -> "Messages": ...
    def __next__(self) -> Value: ...

def decode(data: Bytes, type: Optional[str] = None) -> Value:
    """The value of the one message in `data`, as `type` or as the envelope
    its first octets call for. Raises DecodeError, or ValueError for an
    unknown type name."""

def encode(value: Value, type: str) -> bytes:
    """The BER of `value` as `type`. Raises EncodeError."""

def text(data: Bytes, type: Optional[str] = None) -> str:
    """The library's printed text of the one message in `data`."""

def brief(data: Bytes, type: Optional[str] = None) -> str:
    """zoldump --brief's lines for the one message in `data`."""

def types(filter: Optional[str] = None) -> List[str]:
    """Every type's name, or those whose name or module holds `filter`."""

def messages(source: Union[Bytes, BinaryIO], type: Optional[str] = None, keep_going: bool = False) -> Messages:
    """The values of the messages back to back in `source`, read as they
    are taken."""
