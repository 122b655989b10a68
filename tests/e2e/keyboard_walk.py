# SPDX-License-Identifier: GPL-3.0-or-later
"""Walks through a window by keyboard alone and reports what keyboard and screen reader users would miss."""

import time

from desktop import PATIENCE, Failure, wait_until

USED = {"push button", "toggle button", "check box", "radio button", "combo box", "slider", "spin button", "text",
        "entry", "list item", "table cell", "page tab", "link"}
NOTHING_IN_PARTICULAR = {"filler", "panel", "unknown", "invalid"}
ARROW_KEYS_LEAD_THROUGH = {"table", "tree", "page tab list"}
RING = 30  # pixels at least that change clearly where the focus comes
AROUND = 4  # pixels


def contrast(*colours):
    """Of two of them, from 1 to 21."""
    def luminance(colour):
        red, green, blue = ((part / 255 + 0.055) ** 2.4 / 1.055 ** 2.4 if part > 10 else part / 3294 for part in colour)
        return 0.2126 * red + 0.7152 * green + 0.0722 * blue + 0.05

    darker, lighter = sorted(map(luminance, colours))
    return lighter / darker


class Node:
    def __init__(self, element, parent):
        self.element, self.parent = element, parent
        self.role, self.area = element.role, element.area
        self.name = element.label if self.role == "combo box" else element.name or element.label
        self.enabled, self.focusable = element.has_state("enabled"), element.has_state("focusable")

    def __str__(self):
        return f'{self.role} "{self.name}" at {self.area.x},{self.area.y}'

    def within(self, roles):
        """The nearest of those that hold it, among those roles."""
        holder = self.parent
        while holder and holder.role not in roles:
            holder = holder.parent
        return holder

    def is_used(self):
        """Whether a person does something with it. What is left out here is used by way of another element."""
        if self.within({"combo box", "tree"}):  # the arrow keys of the toolkit lead through the items
            return False
        if self.within({"menu bar"}):  # a walk of its own
            return False
        if self.role == "scroll bar":  # the keys of the scrolled widget move it
            return False
        if self.role == "table cell" and not self.element.has_state("selectable"):  # behind the last file
            return False
        if any(child.role == "page tab list" for child in self.element.children()):  # which has the focus in its place
            return False
        return self.role in USED or self.focusable or bool(self.element.actions)

    def has_focus(self):
        # The chosen tab and the current cell always report the focus.
        focused = self.focusable and self.element.has_state("focused")
        holder = self.within(ARROW_KEYS_LEAD_THROUGH)
        return focused and (not holder or holder.element.has_state("focused"))

    def surrounds(self, other):
        return (self.area.x <= other.area.x and self.area.x + self.area.width >= other.area.x + other.area.width and
                self.area.y <= other.area.y and self.area.y + self.area.height >= other.area.y + other.area.height)

    def leads_on_to(self, other):
        """As the eye goes: to the right or down, into the next column as well."""
        return (other.area.x >= self.area.x + self.area.width - 2 or
                other.area.y >= self.area.y + self.area.height - 2 or self.surrounds(other) or other.surrounds(self))


class KeyboardWalk:
    """Of a window that has the keyboard."""

    def __init__(self, desktop, window):
        self._desktop = desktop
        self.problems = []
        self._nodes = list(self._showing(window, None))
        # The mouse can select parts of an alert's text; the keyboard copies all of it.
        self._used = [node for node in self._nodes
                      if node.is_used() and (window.role, node.role) != ("alert", "label")]

    def _showing(self, element, parent):
        for child in element.children():
            if child.showing:
                node = Node(child, parent)
                yield node
                yield from self._showing(child, node)

    def run(self):
        """The problems, in words."""
        self._look_at_names()
        forward = self._round("Tab")
        backward = self._round("shift+Tab")
        if backward != [forward[0], *reversed(forward[1:])]:
            self.problems.append("Shift+Tab does not lead back: " + ", ".join(map(str, backward)))
        back = [f"{one} -> {other}" for one, other in zip(forward, [*forward[1:], forward[0]])
                if not one.leads_on_to(other)]
        if len(back) > 1:  # from the last to the first
            self.problems.append("Tab jumps about: " + "; ".join(back))
        self._look_for_missed(forward)
        return self.problems

    def _look_at_names(self):
        for node in self._used:
            if not node.name:
                self.problems.append(f"without a name: {node}")
            if node.role in NOTHING_IN_PARTICULAR and node.element.actions:
                self.problems.append(f"without a role: {node}")

    def _look_for_missed(self, reached):
        reached = {*reached, *(node.parent for node in reached)}  # a table is where its cells are
        missed = [node for node in self._used if node.enabled and node not in reached]
        for holder in [node for node in reversed(self._nodes) if node in {one.within(ARROW_KEYS_LEAD_THROUGH)
                                                                          for one in missed}]:
            by_arrows = self._arrows(holder)
            missed = [node for node in missed if node not in by_arrows]
        self.problems += [f"not to be reached with the keyboard: {node}" for node in missed]

    def _focused(self):
        """The innermost of those that have the focus. What surrounds a widget or lies in it reports the focus as well."""
        return next((node for node in reversed(self._nodes) if node.has_focus()), None)

    def _press(self, key):
        """What has the focus then. That takes a moment to find out where the key leads nowhere."""
        before = self._focused()
        self._desktop.key(key)
        end = time.monotonic() + PATIENCE
        while self._focused() in (before, None) and time.monotonic() < end:
            time.sleep(0.01)
        return self._focused()

    def _round(self, key):
        """What gets the focus one after the other, until one comes again."""
        found = []
        node = self._focused() or self._press(key)
        while node and node not in found:
            found.append(node)
            before = self._desktop.picture()
            node = self._press(key)
            if node not in (found[-1], None):
                self._look_at_focus(before, node)
        if not node:
            raise Failure(f"{key} leads to nothing known after {found[-1] if found else 'nothing'}")
        return found

    def _look_at_focus(self, before, node):
        """Which everybody must be able to see as soon as it comes."""
        area = (node.within(ARROW_KEYS_LEAD_THROUGH) or node).area

        def shows():
            after = self._desktop.picture()
            places = ((x, y) for y in range(max(0, area.y - AROUND), min(after.height, area.y + area.height + AROUND))
                      for x in range(max(0, area.x - AROUND), min(after.width, area.x + area.width + AROUND)))
            pairs = ((before.pixel(*place), after.pixel(*place)) for place in places)
            return sum(one != other and contrast(one, other) >= 3 for one, other in pairs) >= RING

        try:
            wait_until("the focus shows", shows, seconds=2)
        except Failure:
            self.problems.append(f"its focus cannot be seen: {node}")

    def _arrows(self, holder):
        for _ in self._used:
            if (node := self._focused()) and holder in (node, node.parent):
                break
            self._press("Tab")
        found = []
        node = self._press("Home")
        while node not in found:
            found.append(node)
            node = self._press("Right")
        for _ in found[1:]:
            self._press("Left")
        return found
