#!/usr/bin/env python3
"""Draws the application icon (a red ON AIR lamp on a dark rounded tile) in
every size the application loads, as plain RGBA PNG files. Run once when the
artwork changes; the PNGs are committed under assets/icons."""
import math
import os
import struct
import sys
import zlib

SIZES = (16, 32, 48, 64, 128, 256)


def png(width, height, pixels):
    def chunk(tag, data):
        body = tag + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body) & 0xFFFFFFFF)

    raw = b"".join(b"\x00" + bytes(pixels[y * width * 4:(y + 1) * width * 4]) for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 6, 0, 0, 0))
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def coverage(dist):
    # one pixel of anti-aliasing on every edge
    return max(0.0, min(1.0, 0.5 - dist))


def draw(size):
    px = bytearray(size * size * 4)
    radius = size * 0.2
    half = size / 2.0
    for y in range(size):
        for x in range(size):
            cx, cy = x + 0.5, y + 0.5
            # rounded square tile
            qx = max(abs(cx - half) - (half - radius), 0.0)
            qy = max(abs(cy - half) - (half - radius), 0.0)
            tile = coverage(math.hypot(qx, qy) - radius)
            # red lamp with a lighter core
            d = math.hypot(cx - half, cy - half)
            lamp = coverage(d - size * 0.30)
            ring = coverage(d - size * 0.38) - coverage(d - size * 0.34)
            shade = 1.0 - 0.35 * min(1.0, d / (size * 0.30))
            r = 28 * (1 - lamp) + 232 * shade * lamp
            g = 30 * (1 - lamp) + 40 * shade * lamp
            b = 36 * (1 - lamp) + 44 * shade * lamp
            if ring > 0:
                r = r * (1 - ring) + 200 * ring
                g = g * (1 - ring) + 200 * ring
                b = b * (1 - ring) + 205 * ring
            i = (y * size + x) * 4
            px[i:i + 4] = bytes((int(r), int(g), int(b), int(255 * tile)))
    return png(size, size, px)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(
        os.path.dirname(__file__), "..", "assets", "icons", "tarnix3", "windows", "png")
    os.makedirs(out, exist_ok=True)
    for s in SIZES:
        with open(os.path.join(out, "TARNIX3_%dx%d.png" % (s, s)), "wb") as f:
            f.write(draw(s))


if __name__ == "__main__":
    main()
