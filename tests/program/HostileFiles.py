"""Makes files in the current folder that try to keep a reader of boxes busy, or to make it take
memory that they do not fill: HostileFiles.py BOX, a whole box. Changed words and cut files are the
business of other tests."""
import struct
import sys
import zlib

END, FREE, NONE = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFF
box = open(sys.argv[1], "rb").read()


def write(name, data):
    with open(name + ".box", "wb") as file:
        file.write(data)


def sparse(name, head, size):
    write(name, head)
    with open(name + ".box", "r+b") as file:
        file.truncate(size)


def compound(streams, storages=0):
    """A box of its own: streams that all have the same long chain, storages one in the other."""
    names = [("Pictures", 1)]
    names += [("s%d" % i, 2) for i in range(streams)] + [("d%d" % i, 1) for i in range(storages)]
    directory = bytearray()
    count = len(names) + 1
    length = 6000  # sectors of the chain

    def add(name, kind, right, child, start, size):
        text = name.encode("utf-16le") + b"\0\0"
        directory.extend(text.ljust(64, b"\0") + struct.pack("<HBB", len(text), kind, 1))
        directory.extend(struct.pack("<III", NONE, right, child) + bytes(36))
        directory.extend(struct.pack("<III", start, size, 0))
    add("Root Entry", 5, NONE, 1, END, 0)
    for i, (name, kind) in enumerate(names, 1):
        last = i == count - 1
        if kind == 2:
            add(name, kind, NONE if last else i + 1, NONE, 0, length * 512)
        else:
            add(name, kind, NONE, NONE if last else i + 1, 0, 0)
    directory.extend(bytes(-len(directory) % 512))
    sectors = len(directory) // 512
    chain = list(range(1, length)) + [END]
    chain += list(range(length + 1, length + sectors)) + [END]
    pages = -(-(len(chain) + 1000) // 128)
    chain += [0xFFFFFFFD] * pages
    chain += [FREE] * (pages * 128 - len(chain))
    places = [length + sectors + i for i in range(pages)]
    head = bytearray(box[:76])
    struct.pack_into("<II", head, 44, pages, length)
    struct.pack_into("<IIIII", head, 56, 4096, END, 0, END, 0)
    head += struct.pack("<109I", *(places + [FREE] * (109 - pages)))
    return bytes(head) + bytes(512 * length) + directory + struct.pack("<%dI" % len(chain), *chain)


write("shared", compound(20000))
write("deep", compound(0, 20000))
sparse("sparse", box, 1 << 30)
sparse("sparse-head", box[:512], 1 << 30)
sparse("sparse-nothing", b"", 1 << 30)

# Pictures as files of a folder box, whose bodies say more than they are.
head = b"\x02JPG\0\x08\0\0\0\0"
numbers = struct.pack("<iiI", 0, 0, 0xFFFFFFF0)
one = struct.pack("<IiiHHIIiiII", 40, 1, 1, 1, 24, 0, 0, 0, 0, 0, 0)
large = struct.pack("<IiiHHIIiiII", 40, 32767, 32767, 1, 24, 0, 0, 0, 0, 0, 0)
zeros = bytes(64 << 20)
for name, body in (("bomb", numbers + one + zeros), ("huge", numbers + large),
                   ("endless", struct.pack("<iiI", 0, 0, 44) + one + bytes(4) + zeros)):
    with open(name, "wb") as file:
        file.write(head + zlib.compress(body, 1))
with open("encoded", "wb") as file:
    file.write(b"\x02JPG\0\x08\1\0\0\0\xff\xff\xff\xff" + bytes(100))
with open("note.inf", "wb") as file:
    file.write(b"KVQX\xff\xff\xff\xff" + bytes(100))
