"""How scripts in Python look at their arguments: as those do that read arguments.sh."""

import argparse
import math


class Parser(argparse.ArgumentParser):
    """The first paragraph of the script's `doc` comes before its options in the help, all others behind them."""

    def __init__(self, name, usage, doc):
        summary, _, details = doc.partition("\n\n")
        super().__init__(
            prog=name,
            usage=f"scripts/{name} [--help] {usage}",
            description=summary,
            epilog=details,
            formatter_class=argparse.RawDescriptionHelpFormatter,
            allow_abbrev=False,
        )

    def error(self, message):
        """Ends the script with one line, of what is wrong and what would be right."""
        self.exit(2, f"{self.prog}: {message}; {self.format_usage()}")


def count(text):
    """A whole number from 1 on."""
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"it takes a whole number from 1 on, not \"{text}\"")
    return int(text)


def seconds(text):
    """Any number above 0."""
    try:
        value = float(text)
    except ValueError:
        value = math.nan
    if not 0 < value < math.inf:
        raise argparse.ArgumentTypeError(f"it takes a number of seconds above 0, not \"{text}\"")
    return value
