#!/usr/bin/env python3
"""Makes every picture of this folder anew, beside this script.

Needs ImageMagick 6, ExifTool, libheif-examples, libjxl-tools, webp and libvips-tools. The encoders
may write other bytes in other versions, so the files are kept; run this to see how they were made.
"""

import os
import struct
import subprocess
import zlib

os.chdir(os.path.dirname(os.path.abspath(__file__)))


def run(*command):
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)


def convert(*arguments):
    run("convert-im6.q16", *arguments)


def tag(name, *tags):
    run("exiftool", "-q", "-overwrite_original", *tags, name)


def chunk(kind, body):
    return struct.pack(">I", len(body)) + kind + body + struct.pack(
        ">I", zlib.crc32(kind + body))


def png(name, width, height, bits, kind, rows, *extra):
    body = b"".join(b"\0" + row for row in rows)
    with open(name, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n"
                   + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, bits, kind, 0, 0, 0))
                   + b"".join(extra) + chunk(b"IDAT", zlib.compress(body, 9))
                   + chunk(b"IEND", b""))


# Colour profiles, written number by number (ICC.1:2001-04), so that no one else's is contained.

def fixed(value):
    return struct.pack(">i", round(value * 65536))


def xyz(x, y, z):
    return b"XYZ \0\0\0\0" + fixed(x) + fixed(y) + fixed(z)


def gamma(value):
    return b"curv\0\0\0\0" + struct.pack(">IH", 1, round(value * 256)) + b"\0\0"


def profile(kind, space, connection, tags):
    text = b"test"
    tags = dict(tags)
    tags[b"desc"] = (b"desc\0\0\0\0" + struct.pack(">I", len(text) + 1) + text + b"\0"
                     + bytes(8 + 2 + 1 + 67))
    tags[b"cprt"] = b"text\0\0\0\0none\0"
    tags[b"wtpt"] = xyz(0.9642, 1, 0.8249)
    offset = 128 + 4 + 12 * len(tags)
    table, data = struct.pack(">I", len(tags)), b""
    for name, body in tags.items():
        table += name + struct.pack(">II", offset + len(data), len(body))
        data += body + bytes(-len(body) % 4)
    size = 128 + len(table) + len(data)
    header = struct.pack(">I4sI4s4s4s", size, b"\0\0\0\0", 0x02100000, kind, space, connection)
    header += struct.pack(">6H", 2020, 1, 1, 0, 0, 0) + b"acsp" + bytes(28)
    header += fixed(0.9642) + fixed(1) + fixed(0.8249)
    return header + bytes(128 - len(header)) + table + data


def display_p3():
    """The primaries of Display P3 adapted to D50, with a plain gamma of 2.2."""
    return profile(b"mntr", b"RGB ", b"XYZ ", {
        b"rXYZ": xyz(0.51512, 0.24120, -0.00105), b"gXYZ": xyz(0.29198, 0.69225, 0.04189),
        b"bXYZ": xyz(0.15710, 0.06657, 0.78407),
        b"rTRC": gamma(2.2), b"gTRC": gamma(2.2), b"bTRC": gamma(2.2)})


def linear_grey():
    return profile(b"mntr", b"GRAY", b"XYZ ", {b"kTRC": gamma(1.0)})


def strange_ink():
    """CMYK in which cyan alone looks like a middle grey: nobody's default would say so."""
    table = b""
    for corner in range(16):
        cyan, magenta, yellow, black = (corner >> 3) & 1, (corner >> 2) & 1, (corner >> 1) & 1, corner & 1
        light = 100 * (1 - black) * (0.5 if cyan else 1) * (0.7 if magenta else 1)
        table += bytes([round(light * 2.55), 128 + 60 * magenta * (1 - black),
                        128 + 60 * yellow * (1 - black)])
    line = bytes(range(256))
    matrix = b"".join(fixed(v) for v in (1, 0, 0, 0, 1, 0, 0, 0, 1))
    lut = b"mft1\0\0\0\0" + bytes([4, 3, 2, 0]) + matrix + line * 4 + table + line * 3
    return profile(b"prtr", b"CMYK", b"Lab ", {b"A2B0": lut, b"A2B1": lut})


def add_rotation(name, quarters):
    """Adds an 'irot' property (quarter turns against the clock) to the picture of a HEIF file."""
    with open(name, "rb") as file:
        data = bytearray(file.read())

    def find(kind):
        return data.index(kind) - 4

    def grow(at, by):
        data[at:at + 4] = struct.pack(">I", struct.unpack(">I", data[at:at + 4])[0] + by)

    def number(at, bytes):
        return int.from_bytes(data[at:at + bytes], "big")

    # Every offset into the media data moves by the ten bytes that are put in before it; those into
    # the data inside of "meta" (construction method 1) stay.
    iloc = find(b"iloc")
    version = data[iloc + 8]
    assert version < 2 and data[iloc + 12] == 0x44
    base = data[iloc + 13] >> 4
    at = iloc + 16
    for _ in range(number(iloc + 14, 2)):
        method = number(at + 2, 2) if version == 1 else 0
        at += 4 + 2 * version + base
        extents = number(at, 2)
        for extent in range(extents):
            grow(at + 2 + 8 * extent, 0 if method == 1 else 10)
        at += 2 + 8 * extents

    ipma, ipco, primary = find(b"ipma"), find(b"ipco"), number(find(b"pitm") + 12, 2)
    boxes, at = 0, ipco + 8
    while at < ipma:
        at, boxes = at + number(at, 4), boxes + 1
    entry = ipma + 16
    while number(entry, 2) != primary:
        entry += 3 + data[entry + 2]
    data[entry + 2] += 1
    data.insert(entry + 2 + data[entry + 2], 0x80 | (boxes + 1))
    grow(ipma, 1)
    data[ipma:ipma] = struct.pack(">I4sB", 9, b"irot", quarters)
    grow(ipco, 9)
    grow(find(b"iprp"), 10)
    grow(find(b"meta"), 10)
    with open(name, "wb") as file:
        file.write(data)


def orientations():
    """Four quarters, 32 by 16 when seen upright: red, green, blue, yellow."""
    quarters = ["rgb(200,40,40)", "rgb(40,180,60)", "rgb(40,60,200)", "rgb(230,210,40)"]
    colours = [argument for q in quarters for argument in ("-size", "16x8", f"xc:{q}")]
    convert("(", *colours[:6], "+append", ")", "(", *colours[6:], "+append", ")", "-append",
            "-depth", "8", "-strip",
            "PNG24:upright.png")
    stored = {1: [], 2: ["-flop"], 3: ["-rotate", "180"], 4: ["-flip"], 5: ["-transpose"],
              6: ["-rotate", "-90"], 7: ["-transverse"], 8: ["-rotate", "90"]}
    for number, turn in stored.items():
        name = f"orientation-{number}.jpg"
        convert("upright.png", *turn, "-sampling-factor", "1x1", "-quality", "95", name)
        tag(name, f"-Orientation#={number}")
    convert("upright.png", "-rotate", "-90", "-strip", "PNG24:turned.png")
    for name in ("orientation-6.png", "orientation-6.tiff"):
        convert("turned.png", "-compress", "zip", name)
        tag(name, "-Orientation#=6")
    run("cwebp", "-quiet", "-lossless", "turned.png", "-o", "orientation-6.webp")
    tag("orientation-6.webp", "-Orientation#=6")
    run("heif-enc", "-q", "90", "orientation-6.jpg", "-o", "orientation-6.heic")
    run("heif-enc", "-A", "-q", "90", "orientation-6.jpg", "-o", "orientation-6.avif")
    for name in ("orientation-6.heic", "orientation-6.avif"):
        add_rotation(name, 3)
    run("cjxl", "--quiet", "orientation-6.jpg", "orientation-6.jxl")
    run("heif-enc", "-q", "90", "upright.png", "-o", "upright-exif-6.heic")
    tag("upright-exif-6.heic", "-Orientation#=6")
    run("cjxl", "--quiet", "-d", "0", "upright.png", "upright.jxl")
    os.remove("turned.png")


def depths():
    wide = [struct.pack(">8H", 0, 0x8080, 0xffff, 0xffff, 0x4000, 0xc0c0, 0x8080, 0x8080)]
    png("rgba16.png", 2, 1, 16, 6, wide)
    png("rgb16.png", 2, 1, 16, 2, [struct.pack(">6H", 0, 0x8080, 0xffff, 0x4040, 0xc0c0, 0x1010)])
    png("grey.png", 2, 1, 8, 0, [bytes([0x30, 0xd0])])
    png("grey16-alpha.png", 2, 1, 16, 4, [struct.pack(">4H", 0xffff, 0x8080, 0x8080, 0xffff)])
    png("grey1.png", 8, 1, 1, 0, [bytes([0b10100000])])
    png("grey-alpha.png", 2, 1, 8, 4, [bytes([200, 128, 100, 255])])
    png("palette-transparent.png", 3, 1, 8, 3, [bytes([0, 1, 2])],
        chunk(b"PLTE", bytes([255, 0, 0, 0, 255, 0, 0, 0, 255])), chunk(b"tRNS", bytes([255, 128, 0])))
    png("transparent-colour.png", 2, 1, 8, 2, [bytes([1, 2, 3, 9, 8, 7])],
        chunk(b"tRNS", struct.pack(">3H", 1, 2, 3)))
    png("one-pixel.png", 1, 1, 8, 2, [bytes([12, 34, 56])])
    convert("-size", "4x4", "xc:rgb(200,100,50)", "-interlace", "PNG", "-strip", "interlaced.png")
    convert("-size", "2x2", "xc:rgb(200,100,50)", "-colorspace", "Lab", "-alpha", "off", "-depth", "8",
            "lab.tiff")
    tiff("rgb-float.tiff", 3, [0.0, 0.5, 1.0])
    tiff("grey-float.tiff", 1, [0.5])
    tiff("rgba-associated.tiff", 4, [100, 50, 0, 128])
    convert("-size", "2x2", "xc:rgb(200,100,50)", "-type", "Palette", "-compress", "none",
            "palette.tiff")
    convert("-size", "4x4", "xc:rgba(200,100,50,0.5)", "-define", "webp:lossless=true", "alpha.webp")


def tiff(name, samples, values):
    """One pixel, little-endian; floats are 32 bits wide, whole numbers 8."""
    isfloat = isinstance(values[0], float)
    bits = 32 if isfloat else 8
    pixel = struct.pack(f"<{samples}f", *values) if isfloat else bytes(values)
    pixel += bytes(-len(pixel) % 4)
    bits_at = 8 + len(pixel)
    extra = struct.pack(f"<{samples}H", *[bits] * samples)
    extra += bytes(-len(extra) % 4)
    formats_at = bits_at + len(extra)
    extra += struct.pack(f"<{samples}H", *[3 if isfloat else 1] * samples)
    short = lambda n, v: struct.pack("<HHIHH", n, 3, 1, v, 0)
    many = lambda n, at: (struct.pack("<HHII", n, 3, samples, at) if samples > 2
                          else short(n, bits if n == 258 else 3))
    fields = [short(256, 1), short(257, 1), many(258, bits_at), short(259, 1),
              short(262, 2 if samples > 1 else 1), struct.pack("<HHII", 273, 4, 1, 8),
              short(277, samples), short(278, 1),
              struct.pack("<HHII", 279, 4, 1, samples * bits // 8)]
    fields += [short(338, 1)] if samples == 4 else []
    fields += [many(339, formats_at)]
    data = pixel + extra
    data += bytes(-len(data) % 2)
    with open(name, "wb") as file:
        file.write(b"II*\0" + struct.pack("<I", 8 + len(data)) + data
                   + struct.pack("<H", len(fields)) + b"".join(fields) + bytes(4))


def colours():
    for name, body in (("p3.icc", display_p3()), ("grey.icc", linear_grey()),
                       ("ink.icc", strange_ink())):
        with open(name, "wb") as file:
            file.write(body)
    small = ["-sampling-factor", "1x1", "-quality", "100"]
    convert("-size", "8x8", "xc:rgb(200,100,50)", "+profile", "*", "-profile", "p3.icc", *small, "p3.jpg")
    p3 = b"p\0\0" + zlib.compress(display_p3(), 9)
    png("p3.png", 1, 1, 8, 2, [bytes([200, 100, 50])], chunk(b"iCCP", p3))
    png("p3-16bit-alpha.png", 1, 1, 16, 6,
        [struct.pack(">4H", 200 * 257, 100 * 257, 50 * 257, 128 * 257)], chunk(b"iCCP", p3))
    # A profile for colours that the picture does not have.
    png("grey-with-rgb-profile.png", 1, 1, 8, 0, [bytes([100])], chunk(b"iCCP", p3))
    png("grey-profile.png", 1, 1, 8, 0, [bytes([128])],
        chunk(b"iCCP", b"p\0\0" + zlib.compress(linear_grey(), 9)))
    run("heif-enc", "-q", "95", "-p", "chroma=444", "p3.jpg", "-o", "p3.heic")
    cyan = ["-size", "8x8", "xc:cmyk(255,0,0,0)", "-colorspace", "CMYK", *small]
    convert(*cyan, "cmyk.jpg")
    convert(*cyan, "-profile", "ink.icc", "cmyk-profile.jpg")
    convert(*cyan, "-compress", "zip", "cmyk.tiff")
    for name in ("p3.icc", "grey.icc", "ink.icc"):
        os.remove(name)


def giants():
    """Small files that claim to be large pictures."""
    png("bomb-60000x60000.png", 60000, 60000, 8, 2, [bytes(64)])
    png("too-long-70000x1.png", 70000, 1, 1, 0, [bytes(8750)])


def frames():
    pictures = ["-size", "8x8", "xc:rgb(255,0,0)", "xc:rgb(0,0,255)"]
    convert("-delay", "10", *pictures, "-loop", "0", "animated.gif")
    convert("-delay", "10", *pictures, "-loop", "0", "-define", "webp:lossless=true",
            "animated.webp")
    convert("-size", "4x4", "xc:none", "-fill", "red", "-draw", "point 1,1", "transparent.gif")
    convert("-size", "4x4", "xc:rgb(9,8,7)", "xc:rgb(1,1,1)", "-depth", "8", "-compress", "zip",
            "two-pages.tiff")


def bmp(name, size, bits, pixels, header=40, compression=0, palette=b"", masks=(), colours=0):
    width, height = size
    if header == 12:
        info = struct.pack("<IHHHH", 12, width, height, 1, bits)
    else:
        info = struct.pack("<IiiHHIIiiII", 40, width, height, 1, bits, compression, len(pixels), 0,
                           0, colours, 0)
        info += b"".join(struct.pack("<I", m) for m in masks)
        info = struct.pack("<I", header) + info[4:] + bytes(max(0, header - len(info)))
    offset = 14 + len(info) + len(palette)
    with open(name, "wb") as file:
        file.write(b"BM" + struct.pack("<IHHI", offset + len(pixels), 0, 0, offset) + info
                   + palette + pixels)


def bitmaps():
    """Each shows, upright: red, green above blue, white."""
    red, green, blue, white = (0, 0, 255), (0, 255, 0), (255, 0, 0), (255, 255, 255)
    upper, lower = bytes(red + green) + b"\0\0", bytes(blue + white) + b"\0\0"
    bmp("24.bmp", (2, 2), 24, lower + upper)
    bmp("24-top-down.bmp", (2, -2), 24, upper + lower)
    bmp("24-os2.bmp", (2, 2), 24, lower + upper, header=12)
    quads = [bytes(c) + b"\0" for c in (blue, white, red, green)]
    bmp("32.bmp", (2, 2), 32, b"".join(quads))
    alpha = b"".join(bytes(c) + bytes([a]) for c, a in
                     ((blue, 255), (white, 128), (red, 255), (green, 0)))
    bmp("32-alpha.bmp", (2, 2), 32, alpha, header=108, compression=3,
        masks=(0xff0000, 0xff00, 0xff, 0xff000000))
    five = lambda r, g, b: struct.pack("<H", r << 11 | g << 5 | b)
    bmp("16-565.bmp", (2, 2), 16, five(0, 0, 31) + five(31, 63, 31) + five(31, 0, 0)
        + five(0, 63, 0), compression=3, masks=(0xf800, 0x7e0, 0x1f))
    bmp("16-555.bmp", (2, 2), 16, struct.pack("<4H", 0x1f, 0x7fff, 0x7c00, 0x3e0))
    table = b"".join(bytes(c) + b"\0" for c in (red, green, blue, white))
    bmp("8.bmp", (2, 2), 8, bytes([2, 3, 0, 0, 0, 1, 0, 0]), palette=table, colours=4)
    bmp("4.bmp", (2, 2), 4, bytes([0x23, 0, 0, 0, 0x01, 0, 0, 0]), palette=table, colours=4)
    bmp("8-rle.bmp", (2, 2), 8, bytes([1, 2, 1, 3, 0, 0, 1, 0, 1, 1, 0, 1]), compression=1,
        palette=table, colours=4)
    # A literal run of three and a skip over what then stays transparent.
    bmp("8-rle-skip.bmp", (4, 2), 8, bytes([0, 3, 0, 1, 2, 0, 0, 2, 1, 1, 0, 1]), compression=1,
        palette=table, colours=4)
    bmp("4-rle.bmp", (2, 2), 4, bytes([2, 0x23, 0, 0, 2, 0x01, 0, 1]), compression=2,
        palette=table, colours=4)
    two = b"\0\0\0\0\xff\xff\xff\0"
    bmp("1.bmp", (9, 1), 1, bytes([0b10100000, 0b10000000, 0, 0]), palette=two)


def photograph():
    """Noise on a slope: enough data that a cut or a changed byte falls into pixels."""
    for name in ("noise.jpg", "noise.png", "noise.webp", "noise.tiff", "noise.gif"):
        convert("-size", "48x40", "-seed", "3", "gradient:navy-orange", "-attenuate", "0.3",
                "+noise", "Gaussian", "-depth", "8", "-strip", *(["-quality", "85"] if name[-3:] in ("jpg", "ebp") else []),
                *(["-compress", "lzw"] if "tiff" in name else []), name)
    convert("noise.png", "-interlace", "JPEG", "-quality", "85", "noise-progressive.jpg")
    run("heif-enc", "-q", "60", "noise.png", "-o", "noise.heic")
    run("heif-enc", "-A", "-q", "60", "noise.png", "-o", "noise.avif")
    run("cjxl", "--quiet", "-d", "2", "noise.png", "noise.jxl")


def old_exif():
    """Exif as programs packed it into a text, before there was a chunk for it."""
    convert("upright.png", "-quality", "95", "exif.jpg")
    tag("exif.jpg", "-Artist=somebody", "-GPSLatitude=48.1", "-GPSLatitudeRef=N",
        "-GPSAreaInformation=the old town")
    jpeg = open("exif.jpg", "rb").read()
    os.remove("exif.jpg")
    at = jpeg.index(b"Exif\0\0")
    exif = jpeg[at:at - 2 + struct.unpack(">H", jpeg[at - 2:at])[0]]
    digits = exif.hex()
    lines = [digits[i:i + 72] for i in range(0, len(digits), 72)]
    text = "\nexif\n%8d\n%s\n" % (len(exif), "\n".join(lines))
    body = b"Raw profile type exif\0\0" + zlib.compress(text.encode())
    plain = open("upright.png", "rb").read()
    header = 8 + 25  # the signature and the first chunk
    with open("raw-profile-exif.png", "wb") as file:
        file.write(plain[:header] + chunk(b"zTXt", body) + plain[header:])


orientations()
depths()
colours()
frames()
bitmaps()
photograph()
old_exif()
giants()
