#!/usr/bin/env python3
"""Shows that what the demonstration takes for a sign on the screen is one, on pictures drawn here."""

import unittest

from desktop import Picture
from live_image import LiveImage, colours, is_mirrored

SURROUND = (30, 30, 32)


class Screen:
    """A desktop's screen with a camera picture from `left` to `right`, brighter on one side."""

    def __init__(self, left, right, mirrored=False, shade=0):
        self.left, self.right, self.mirrored, self.shade = left, right, mirrored, shade

    def colour(self, x, y):
        if not self.left <= x <= self.right:
            return SURROUND
        across = (x - self.left) / max(1, self.right - self.left)
        level = 60 + int(180 * (1 - across if self.mirrored else across))
        return level, (level + y) % 256, min(255, 100 + self.shade)

    def picture(self, x, y, width, height):
        rows = []
        for row in range(y, y + height):
            line = bytearray()
            for column in range(x, x + width):
                red, green, blue = self.colour(column, row)
                line += bytes((blue, green, red, 0))
            rows.append(bytes(line))
        return Picture(width, height, rows)


def live(*arguments, **options):
    return LiveImage(Screen(*arguments, **options), (0, 0, 400, 200))


class LiveImageTest(unittest.TestCase):
    def test_extent(self):
        for edges in ((100, 299), (0 + 20, 379), (190, 210)):
            self.assertEqual(live(*edges).extent(), edges)
        self.assertEqual(live(100, 299).width(), 200)

    def test_no_picture(self):
        empty = live(1000, 1001)
        self.assertEqual(empty.width(), 0)
        self.assertEqual(colours(empty.picture()), 1)
        self.assertGreater(colours(live(100, 299).picture()), 300)

    def test_mirrored(self):
        before = live(100, 299).brightness()
        self.assertTrue(is_mirrored(before, live(100, 299, mirrored=True, shade=20).brightness()))
        self.assertFalse(is_mirrored(before, live(100, 299, shade=20).brightness()))


if __name__ == "__main__":
    unittest.main()
