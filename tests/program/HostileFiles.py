"""Makes files in the current folder that try to keep a reader of compound files busy, or to make it
take memory that they do not fill: HostileFiles.py BOX, a whole box with a picture "a" of some
kilobytes, which most of them are changed copies of."""
import random
import struct
import sys
import zlib

END, FREE, NONE = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFF
box = open(sys.argv[1], "rb").read()


def word(data, at):
    return struct.unpack_from("<I", data, at)[0]


def offset(sector):
    return 512 + 512 * sector


def write(name, data):
    with open(name + ".box", "wb") as file:
        file.write(data)


def changed(name, changes):
    data = bytearray(box)
    for at, value in changes:
        struct.pack_into("<I", data, at, value)
    write(name, data)


def sparse(name, head, size):
    write(name, head)
    with open(name + ".box", "r+b") as file:
        file.truncate(size)


def entries():
    """Where the directory's entries begin, with their names."""
    sector = word(box, 48)
    while sector < 0xFFFFFFF0:
        for at in range(offset(sector), offset(sector) + 512, 128):
            yield at, box[at:at + 64].decode("utf-16le").rstrip("\0")
        sector = word(box, table + 4 * sector)


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


table = offset(word(box, 76))
entry = {name: at for at, name in entries()}
picture = entry["a"]
first = word(box, picture + 116)
root = entry["Root Entry"]
random.seed(1)

for length in (0, 1, 8, 100, 511, 512, 513, 1024, len(box) // 2, len(box) - 1):
    write("cut%d" % length, box[:length])
write("random", bytes(random.randrange(256) for i in range(100000)))
write("signature", box[:8] + bytes(random.randrange(256) for i in range(100000)))
for i in range(10):
    changed("words%d" % i, [(4 * random.randrange(len(box) // 4), random.choice((0, 1, 7, END, FREE, 0x7FFFFFFF)))
                            for k in range(5)])
changed("circle", [(table + 4 * first, first)])
changed("directory-circle", [(table + 4 * word(box, 48), word(box, 48))])
changed("beyond", [(table + 4 * first, 0x00FFFFFF)])
changed("long", [(picture + 120, 0xFFFFFFFF)])
changed("small-start", [(picture + 120, 4000)])
changed("tables", [(44, 0xFFFFFFFF), (72, 0xFFFFFFFF)])
changed("difat-circle", [(68, first), (72, 1)])
changed("sectors", [(30, 0x0006001F)])
changed("own-child", [(root + 76, word(box, root + 76)), (picture + 68, (picture - root) // 128),
                      (picture + 72, 0)])
changed("no-root", [(root + 64, 0)])
write("own-table", box[:table] + struct.pack("<128I", *range(128)) + box[table + 512:])
write("zeros", box[:table] + bytes(512) + box[table + 512:])
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
