"""The generated block of a page: the only block in it that starts with ```text, without its fences."""

import re

from ambrel_lab import LabError

TEXT_BLOCK = re.compile(r"(?<=^```text\n).*?(?=^```$)", re.MULTILINE | re.DOTALL)


def text_block(page, name):
    """The block's text. Raises LabError, which mentions the page's name, unless there is exactly one."""
    found = TEXT_BLOCK.findall(page)
    if len(found) != 1:
        raise LabError(f"{name} has {len(found)} blocks that start with ```text, expected 1")
    return found[0]


def with_text_block(page, text):
    """The page with another text in its block."""
    return TEXT_BLOCK.sub(lambda _: text, page)
