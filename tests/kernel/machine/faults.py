"""What can go wrong before and while the machine runs."""


class MissingPackage(Exception):
    """Something the machine is made of is not there. `package` is the Debian package that brings it."""

    def __init__(self, what, package):
        super().__init__(f"{what} is missing; it comes with the Debian package {package}")
        self.package = package


class MachineFailure(Exception):
    """The machine itself failed, not the command in it: a panic, a hang, an end without an answer."""


class TimeIsUp(MachineFailure):
    """The command had not ended in the time it was given."""
