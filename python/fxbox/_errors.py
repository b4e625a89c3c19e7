"""What the library answers when it cannot do what was asked."""

from __future__ import annotations


class Error(Exception):
    """A failure of the library; the text is for a person."""


class ChainError(Error, ValueError):
    """A chain text, or an item of a chain, is wrong.

    The text names item and place; the attributes have them for a program. Items, lines and
    characters count from 1; 0 stands for "not known".

    >>> import fxbox
    >>> try:
    ...     fxbox.Chain("ZNFilter.Sepia.1(Sepai=50)")
    ... except fxbox.ChainError as error:
    ...     print(error.item, error.filter, error.line, error.character)
    1 ZNFilter.Sepia.1 1 18
    """

    def __init__(
        self, message: str, item: int = 0, filter: str = "", line: int = 0, character: int = 0
    ) -> None:
        super().__init__(message)
        self.item = item
        self.filter = filter
        self.line = line
        self.character = character


class Cancelled(Error):
    """The progress function asked to stop by returning False."""
