# SPDX-License-Identifier: GPL-3.0-or-later
"""The command that starts the machine."""

PORTS = ("status", "output", "errors")  # in the order of their numbers in the guest: /dev/vport0p1 and on
ENDS = ("console", *PORTS)
BOOT = ("console=ttyS0 quiet panic=-1 oops=panic "
        # no attacks are expected, and its random numbers need not be secret
        "mitigations=off random.trust_cpu=on cryptomgr.notests "
        # its processors have one clock; the kernel would suspect several, and ask a much slower one
        "tsc=reliable")


def command(kernel, initramfs, ends):
    """Boots `kernel` with the file `initramfs`. `ends` are the numbers of open sockets for each of ENDS."""
    arguments = [
        # it ends with us, however we end
        "setpriv", "--pdeathsig", "KILL", "--",
        # in software: help from the processor is not to be had everywhere, nor to be trusted where it seems to be
        "qemu-system-x86_64", "-accel", "tcg,thread=multi", "-cpu", "max,la57=off", "-smp", "1", "-m", "2G",
        # no keyboard, so that every input device is one that a test has made
        "-machine", "pc,i8042=off", "-nodefaults", "-no-user-config", "-display", "none", "-no-reboot",
        "-kernel", str(kernel.image), "-initrd", str(initramfs), "-append", BOOT,
        "-chardev", f"socket,id=console,fd={ends['console']}", "-serial", "chardev:console",
        "-device", "virtio-serial-pci",  # the first of its kind, so that its ports are vport0
    ]
    for number, name in enumerate(PORTS, 1):
        arguments += ["-chardev", f"socket,id={name},fd={ends[name]}",
                      "-device", f"virtserialport,nr={number},chardev={name},name={name}"]
    # the host's files
    return [*arguments, "-fsdev", "local,id=host,path=/,security_model=none,multidevs=remap,readonly=on",
            "-device", "virtio-9p-pci,fsdev=host,mount_tag=host"]
