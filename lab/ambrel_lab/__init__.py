"""A Windows desktop on Linux for seeing and testing Ambrel; see lab/README.md.

    with Lab() as lab:
        lab.install_program(exe)
        lab.start_program()
        lab.wait_for_tray_icon()
        lab.click_tray()
"""

from .lab import Lab
from .picture import Picture
from .places import LabError

__all__ = ["Lab", "LabError", "Picture"]
