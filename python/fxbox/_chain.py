"""Chains of filters as lists whose items can be edited."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, MutableMapping, MutableSequence
from functools import lru_cache
from typing import Union, overload

import numpy

from fxbox import _fxbox

Value = Union[bool, int, float, str]


@lru_cache(maxsize=None)
def _by_name() -> dict[str, _fxbox.Filter]:
    return {known.name: known for known in _fxbox.filters()}


def _full_name(name: str) -> str:
    """"Sepia" means "ZNFilter.Sepia.1"."""
    known = _by_name()
    longer = f"ZNFilter.{name}.1"
    return longer if name not in known and longer in known else name


class Item(MutableMapping[str, Value]):
    """One filter of a chain with its parameters, which are got and set by key.

    >>> import fxbox
    >>> item = fxbox.Item("Sepia", Sepia=80)
    >>> item["Sepia"]
    80
    >>> item["Sepia"] = 50
    >>> print(item)
    ZNFilter.Sepia.1(Sepia=50)

    A key that is left out keeps the filter's default. `fxbox.help_on("Sepia")` prints the keys.
    Values come back as int, float or str, as the filter has the key. Texts, such as that of the
    filter Text, are plain str here, and percent-encoded in the chain text.
    """

    __slots__ = ("_name", "_values")

    def __init__(self, filter: str, /, **parameters: Value) -> None:
        self._name = _full_name(filter)
        self._values: dict[str, str | None] = {}
        for key, value in parameters.items():
            self[key] = value

    @classmethod
    def _of(cls, name: str, parameters: str) -> Item:
        item = cls(name)
        item._values = dict(_fxbox.split_parameters(parameters))
        return item

    @property
    def filter(self) -> str:
        """The filter's full name, such as "ZNFilter.Sepia.1"."""
        return self._name

    @property
    def parameters(self) -> str:
        """The parameter text: "Key=value, Key=value"."""
        return ", ".join(
            key if value is None else f"{key}={value}" for key, value in self._values.items()
        )

    def _kind(self, key: str) -> str:
        known = _by_name().get(self._name)
        found = known.key(key) if known else None
        return found.kind if found else ""

    def __getitem__(self, key: str) -> Value:
        value = self._values[key]
        if value is None:
            return ""
        kind = self._kind(key)
        try:
            if kind == "text":
                return _fxbox.decode_text(value)
            if kind == "hexadecimal":
                return int(value, 16)
            return float(value) if kind == "number" else int(value)
        except ValueError:
            return value

    def __setitem__(self, key: str, value: Value) -> None:
        kind = self._kind(key)
        if kind == "text":
            self._values[key] = _fxbox.encode_text(str(value))
        elif isinstance(value, str):
            self._values[key] = value
        elif kind == "hexadecimal":
            self._values[key] = f"{int(value):06x}"
        elif isinstance(value, float) or isinstance(value, numpy.floating):
            self._values[key] = numpy.format_float_positional(value, trim="0")
        else:
            self._values[key] = str(int(value))

    def __delitem__(self, key: str) -> None:
        del self._values[key]

    def __iter__(self) -> Iterator[str]:
        return iter(self._values)

    def __len__(self) -> int:
        return len(self._values)

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Item) and str(self) == str(other)

    __hash__ = None  # type: ignore[assignment]

    def __str__(self) -> str:
        return f"{self._name}({self.parameters})"

    def __repr__(self) -> str:
        given = "".join(f", {key}={self[key]!r}" for key in self)
        return f"fxbox.Item({self._name!r}{given})"


class Chain(MutableSequence[Item]):
    """A list of filters, the first of them next to the picture.

    Made from a chain text, which is checked, from items, or empty:

    >>> import fxbox
    >>> chain = fxbox.Chain("ZNFilter.Sepia.1(Sepia=080)ZNFilter.Invert.1(Inversity=100)")
    >>> chain[0]["Sepia"] = 40
    >>> chain.append(fxbox.Item("Transparency", Transparency=50))
    >>> del chain[1]
    >>> print(chain)
    ZNFilter.Sepia.1(Sepia=40)ZNFilter.Transparency.1(Transparency=50)
    >>> chain.size(640, 480)
    (640, 480)

    Nothing of a picture is kept in it; one chain may serve any number of renders and threads, as
    long as nobody edits it meanwhile.
    """

    __slots__ = ("_items",)

    def __init__(self, items: str | Iterable[Item] = (), *, lenient: bool = False) -> None:
        """A text is checked as `check` does it; with `lenient` it is taken as it is."""
        if isinstance(items, str):
            text = items if lenient else _fxbox.check(items)
            items = [Item._of(name, parameters) for name, parameters in _fxbox.split(text)]
        self._items = [self._checked(item) for item in items]

    @staticmethod
    def _checked(item: object) -> Item:
        if not isinstance(item, Item):
            raise TypeError(f"a chain holds fxbox.Item, not {type(item).__name__}")
        return item

    def check(self) -> None:
        """Raises ChainError where an item names an unknown filter or key, or a value that its
        filter would not keep."""
        _fxbox.check(str(self))

    def size(self, width: int, height: int) -> tuple[int, int]:
        """Width and height of the result for a picture of this size."""
        return _fxbox.size(str(self), width, height)

    @overload
    def __getitem__(self, index: int) -> Item: ...
    @overload
    def __getitem__(self, index: slice) -> Chain: ...
    def __getitem__(self, index: int | slice) -> Item | Chain:
        return Chain(self._items[index]) if isinstance(index, slice) else self._items[index]

    @overload
    def __setitem__(self, index: int, value: Item) -> None: ...
    @overload
    def __setitem__(self, index: slice, value: Iterable[Item]) -> None: ...
    def __setitem__(self, index: int | slice, value: Item | Iterable[Item]) -> None:
        if isinstance(index, slice):
            self._items[index] = [self._checked(item) for item in value]
        else:
            self._items[index] = self._checked(value)

    def __delitem__(self, index: int | slice) -> None:
        del self._items[index]

    def __len__(self) -> int:
        return len(self._items)

    def insert(self, index: int, value: Item) -> None:
        """Puts an item ahead of the one with this index."""
        self._items.insert(index, self._checked(value))

    def __add__(self, other: Chain) -> Chain:
        return Chain([*self, *other]) if isinstance(other, Chain) else NotImplemented

    def __eq__(self, other: object) -> bool:
        return isinstance(other, Chain) and str(self) == str(other)

    __hash__ = None  # type: ignore[assignment]

    def __str__(self) -> str:
        return "".join(str(item) for item in self._items)

    def __repr__(self) -> str:
        return f"fxbox.Chain({str(self)!r})"
