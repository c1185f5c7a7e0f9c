"""A Windows desktop on Linux for running and testing Ambrel; see lab/README.md.

    with Lab() as lab:
        lab.install_program(exe)
        lab.start_program()
        lab.wait_for_tray_icon()
        lab.click_tray()
"""

from .paths import LabError

__all__ = ["Lab", "LabError", "Picture"]


def __getattr__(name):
    """Imports Lab and Picture on first use: the watchdog process of each lab needs neither."""
    if name == "Lab":
        from .lab import Lab
        return Lab
    if name == "Picture":
        from .picture import Picture
        return Picture
    raise AttributeError(name)
