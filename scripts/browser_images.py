#!/usr/bin/env python3
"""Draws the browser's images (tool bar, tree, tick states, stock pictures)
into browser/ui/images/ as PNG. They are this project's own, under its
licence; run again after changing a drawing."""
import math
import os
import struct
import zlib

OUT = os.path.join(os.path.dirname(__file__), '..', 'browser', 'ui', 'images')


class Canvas:
    def __init__(self, w, h, fill=(0, 0, 0, 0)):
        self.w, self.h = w, h
        self.px = [[fill] * w for _ in range(h)]

    def dot(self, x, y, c):
        if 0 <= x < self.w and 0 <= y < self.h:
            self.px[y][x] = c

    def rect(self, x0, y0, x1, y1, c):
        for y in range(y0, y1 + 1):
            for x in range(x0, x1 + 1):
                self.dot(x, y, c)

    def frame(self, x0, y0, x1, y1, c, t=1):
        self.rect(x0, y0, x1, y0 + t - 1, c)
        self.rect(x0, y1 - t + 1, x1, y1, c)
        self.rect(x0, y0, x0 + t - 1, y1, c)
        self.rect(x1 - t + 1, y0, x1, y1, c)

    def line(self, x0, y0, x1, y1, c, t=1):
        n = max(abs(x1 - x0), abs(y1 - y0), 1)
        for i in range(n + 1):
            x = x0 + (x1 - x0) * i / n
            y = y0 + (y1 - y0) * i / n
            self.rect(int(x - (t - 1) / 2), int(y - (t - 1) / 2), int(x + t / 2), int(y + t / 2), c)

    def disc(self, cx, cy, r, c):
        for y in range(int(cy - r), int(cy + r) + 1):
            for x in range(int(cx - r), int(cx + r) + 1):
                if (x - cx) ** 2 + (y - cy) ** 2 <= r * r:
                    self.dot(x, y, c)

    def save(self, name):
        raw = b''.join(b'\0' + b''.join(bytes(p) for p in row) for row in self.px)
        def chunk(kind, data):
            return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))
        png = b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', self.w, self.h, 8, 6, 0, 0, 0))
        png += chunk(b'IDAT', zlib.compress(raw, 9)) + chunk(b'IEND', b'')
        with open(os.path.join(OUT, name), 'wb') as f:
            f.write(png)


INK = (40, 40, 48, 255)
BLUE = (40, 90, 200, 255)
RED = (200, 50, 40, 255)
GREEN = (40, 150, 60, 255)
GOLD = (230, 180, 40, 255)
GREY = (150, 150, 156, 255)
LIGHT = (225, 225, 230, 255)
WHITE = (255, 255, 255, 255)

# Tool bar, 30 x 30: Size, 3D, Close, Import.
c = Canvas(30, 30)
for s, col in ((8, GREY), (14, BLUE), (22, INK)):
    c.frame(2, 28 - s, 2 + s, 28, col, 2)
c.save('size.png')
c = Canvas(30, 30)
for i, col in enumerate((RED, GOLD, GREEN)):
    for k in range(6):
        c.line(5 + i * 8 + k, 4 + k * 4, 5 + i * 8 + k + 3, 4 + k * 4 + 3, col, 2)
        c.line(5 + i * 8 + k + 3, 4 + k * 4 + 3, 5 + i * 8 + k + 5, 4 + k * 4 + 1, (255, 255, 255, 200), 1)
c.save('3d.png')
c = Canvas(30, 30)
c.line(7, 7, 23, 23, RED, 3)
c.line(23, 7, 7, 23, RED, 3)
c.save('close.png')
c = Canvas(30, 30)
c.frame(4, 14, 26, 27, INK, 2)
c.line(15, 2, 15, 19, GREEN, 3)
c.line(9, 13, 15, 19, GREEN, 3)
c.line(21, 13, 15, 19, GREEN, 3)
c.save('import.png')

# Tree, 16 x 16: fixed, removable, CD-ROM, network, RAM disk, closed and open folder.
def drive(col):
    d = Canvas(16, 16)
    d.rect(1, 6, 14, 12, GREY)
    d.frame(1, 6, 14, 12, INK)
    d.rect(11, 9, 12, 10, col)
    return d
drive(GREEN).save('drive_fixed.png')
d = Canvas(16, 16)
d.rect(3, 2, 12, 14, BLUE)
d.frame(3, 2, 12, 14, INK)
d.rect(5, 3, 10, 7, WHITE)
d.save('drive_removable.png')
d = Canvas(16, 16)
d.disc(7.5, 7.5, 7, LIGHT)
d.disc(7.5, 7.5, 2, INK)
d.save('drive_cdrom.png')
d = drive(BLUE)
d.line(7, 13, 7, 15, INK)
d.line(2, 15, 13, 15, INK)
d.save('drive_network.png')
d = Canvas(16, 16)
d.rect(1, 5, 14, 10, GREEN)
d.frame(1, 5, 14, 10, INK)
for x in (3, 6, 9, 12):
    d.line(x, 11, x, 13, INK)
d.save('drive_ram.png')
d = Canvas(16, 16)
d.rect(1, 4, 6, 5, GOLD)
d.rect(1, 5, 14, 13, GOLD)
d.frame(1, 5, 14, 13, (150, 110, 20, 255))
d.save('folder_closed.png')
d = Canvas(16, 16)
d.rect(1, 4, 6, 5, GOLD)
d.rect(1, 5, 12, 13, (200, 150, 30, 255))
for y in range(8, 14):
    d.line(3 + (13 - y) // 2, y, 15 - (13 - y) // 2, y, GOLD)
d.frame(1, 5, 12, 13, (150, 110, 20, 255))
d.save('folder_open.png')

# Tick states, 13 x 13, numbered as the trees hold them: 1 unticked,
# 2 ticked, 3 ticked with some children, 4 unticked with all, 5 ticked with
# all (or no children), 6 unticked with some.
def box(ticked, children):
    b = Canvas(13, 13)
    b.rect(0, 0, 12, 12, WHITE)
    b.frame(0, 0, 12, 12, INK)
    if ticked:
        b.line(3, 6, 5, 9, INK, 2)
        b.line(5, 9, 9, 3, INK, 2)
    if children == 'some':
        b.rect(9, 9, 11, 11, GREY)
    if children == 'all':
        b.rect(8, 8, 11, 11, BLUE)
    return b
for n, (ticked, children) in enumerate(((False, None), (True, None), (True, 'some'), (False, 'all'),
                                        (True, 'all'), (False, 'some')), start=1):
    box(ticked, children).save('tick%d.png' % n)

# Stock pictures of a design that does not read: a hoop with a torn thread.
for size in (128, 200, 400):
    s = Canvas(size, size, WHITE)
    r = size * 0.38
    for k in range(3):
        ring = r - k
        for a in range(0, 3600):
            t = a / 1800 * math.pi
            s.dot(int(size / 2 + ring * math.cos(t)), int(size / 2 + ring * math.sin(t)), GREY)
    w = max(2, size // 50)
    s.line(int(size * 0.3), int(size * 0.55), int(size * 0.47), int(size * 0.42), RED, w)
    s.line(int(size * 0.53), int(size * 0.58), int(size * 0.7), int(size * 0.45), RED, w)
    q = size // 10
    s.frame(size // 2 - q, int(size * 0.2) - q // 2, size // 2 + q, int(size * 0.2) + q // 2, INK, max(1, size // 100))
    s.save('stock%d.png' % size)
