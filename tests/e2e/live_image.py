# SPDX-License-Identifier: GPL-3.0-or-later
"""What the screen shows of the camera's picture: where it is, and whether it is mirrored."""

NEARLY = 12  # two colours that differ by no more than this in each part count as one
GAP = 8  # that many pixels of the surround in a row end the picture


def alike(one, other):
    return all(abs(a - b) <= NEARLY for a, b in zip(one, other))


def extent(row, surround):
    """First and last index of the picture in a row or column of pixels, from the middle outwards; None if the middle
    shows no picture."""

    def reach(indexes):
        last, missed = None, 0
        for index in indexes:
            if alike(row[index], surround):
                missed += 1
                if missed == GAP:
                    break
            else:
                last, missed = index, 0
        return last

    middle = len(row) // 2
    left, right = reach(range(middle, -1, -1)), reach(range(middle, len(row)))
    return None if left is None or right is None else (left, right)


def colours(picture, step=7):
    """How many different colours there are, looking at one pixel in `step` each way."""
    return len({picture.pixel(x, y) for y in range(0, picture.height, step) for x in range(0, picture.width, step)})


class LiveImage:
    """Looks at the screen area of the live image. All answers are about the present moment."""

    def __init__(self, desktop, area):
        self._desktop = desktop
        self._area = area

    def picture(self):
        return self._desktop.picture(*self._area)

    def extent(self):
        """Left and right edge of the camera's picture, in pixels from the left of the area; None without one."""
        picture = self.picture()
        # a little below the middle, where neither the bar nor the status line lies over the picture
        row = [picture.pixel(x, picture.height * 6 // 10) for x in range(picture.width)]
        return extent(row, row[2])

    def width(self):
        edges = self.extent()
        return edges[1] - edges[0] + 1 if edges else 0

    def brightness(self):
        """Of the camera's picture, pixel for pixel, in some of its rows."""
        picture = self.picture()
        left, right = self.extent() or (0, picture.width - 1)
        return [[sum(picture.pixel(x, y)) for x in range(left, right + 1)]
                for y in range(picture.height // 5, picture.height * 4 // 5, 10)]


def difference(one, other):
    return sum(abs(a - b) for row_a, row_b in zip(one, other) for a, b in zip(row_a, row_b))


def is_mirrored(before, now):
    """Whether `now` resembles `before` with left and right exchanged more than `before` itself (as brightness())."""
    return 2 * difference(now, [row[::-1] for row in before]) < difference(now, before)
