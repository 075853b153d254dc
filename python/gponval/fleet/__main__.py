"""``python3 -m gponval.fleet`` is the command ``gponval-fleet``."""

import sys

from gponval.fleet._command import main

if __name__ == "__main__":
    sys.exit(main())
