"""Picture filters: colour, tone, sharpening, blurring, crop, scale, rotation, frames, texts.

A picture is a NumPy array of shape (height, width, 3 or 4) and type uint8: red, green, blue, and
alpha where there is a fourth channel (255 is opaque). A chain of filters is a text, or a Chain with
items to edit:

    import fxbox, numpy
    photo = numpy.zeros((480, 640, 3), numpy.uint8)
    old = fxbox.render(photo, "ZNFilter.Sepia.1(Sepia=080)")

    chain = fxbox.Chain([fxbox.Item("Sepia", Sepia=80)])
    chain.append(fxbox.Item("Shadow"))
    chain[0]["Sepia"] = 40
    framed = fxbox.render(photo, chain)

What there is: `filters()` lists the filters with their keys and ranges, `help_on("Sepia")` prints
one of them for reading. `Box` opens boxes of pictures, `SharedPicture` pictures that several
processes see at once. Everything that goes wrong is an Error; in a chain it is a ChainError, which
has item and place.

Rendering lets other threads run, Ctrl+C stops it, and the same chain on the same picture gives the
same bytes on every machine.
"""

from __future__ import annotations

from fxbox._chain import Chain, Item, Value, _by_name, _full_name
from fxbox._errors import Cancelled, ChainError, Error
from fxbox._fxbox import Box, Filter, Key, SharedPicture, __version__, filters, set_threads
from fxbox import _fxbox

from collections.abc import Callable

import numpy
from numpy.typing import NDArray

__all__ = [
    "Box", "Cancelled", "Chain", "ChainError", "Error", "Filter", "Item", "Key", "SharedPicture",
    "Value", "__version__", "filters", "help_on", "render", "set_threads",
]


def render(
    picture: NDArray[numpy.uint8],
    chain: str | Chain,
    *,
    zoom: float | None = None,
    full_size: tuple[int, int] | None = None,
    part: tuple[int, int, int, int] | None = None,
    channels: int | None = None,
    lenient: bool = False,
    most_pixels: int = 500_000_000,
    progress: Callable[[float], object] | None = None,
) -> NDArray[numpy.uint8]:
    """The picture behind a chain of filters, as a new array.

    picture      shape (height, width, 3 or 4), uint8; it is only read. Any distance between rows is
                 taken without a copy (crops, `array[::-1]`); where the pixels of a row do not lie
                 side by side, the array is copied once.
    chain        a chain text or a Chain; "" gives a copy.
    zoom         size of this picture over its full size, for a preview: lengths in pixels follow.
    full_size    width and height of the same picture in full size.
    part         left, top, width, height of the part of the result that is wanted.
    channels     of the result: 3, 4, or None for 4 where the picture has 4 or the result has
                 transparency, else 3.
    lenient      skip what is unknown in a chain text instead of raising ChainError.
    most_pixels  no picture on the way may have more.
    progress     is called on this thread, 50 times a second and at the end, with the share of the
                 picture that the filters have taken, 0 to 1; False as a
                 result raises Cancelled, an exception in it ends the work and goes through.

    Any number of threads may render at once; the interpreter is free meanwhile.

    >>> import fxbox, numpy
    >>> grey = numpy.full((2, 3, 3), 100, numpy.uint8)
    >>> fxbox.render(grey, "ZNFilter.Invert.1(Inversity=100)")[0, 0].tolist()
    [155, 155, 155]
    """
    return _fxbox.render(
        picture,
        str(chain),
        zoom=zoom,
        full_size=full_size,
        part=part,
        channels=channels,
        lenient=lenient,
        most_pixels=most_pixels,
        progress=progress,
    )


def help_on(name: str) -> None:
    """Prints what a filter does, with its keys, their ranges and an example.

    >>> import fxbox
    >>> fxbox.help_on("Sepia")
    ZNFilter.Sepia.1: Sepia tone
        Sepia  (whole number, 0 to 100, default 000)  strength of the brown tone
    Example: ZNFilter.Sepia.1(Sepia=075)
    """
    known = _by_name().get(_full_name(name))
    if known is None:
        raise KeyError(f"there is no filter {name!r}; fxbox.filters() lists all")
    print(f"{known.name}: {known.gloss}")
    for key in known.keys:
        span = "" if key.least is None else f", {key.least:g} to {key.greatest:g}"
        default = "" if key.default is None else f", default {key.default}"
        print(f"    {key.name}  ({key.kind}{span}{default})  {key.gloss}")
    print(f"Example: {known.example}")
