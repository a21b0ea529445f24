"""Runs pytest inside the host's interpreter, with the plug-ins' script modules loaded and the
example scene open: oxlin --no-gui --script run_pytest.py -- [pytest arguments]."""

import sys

import pytest

sys.exit(pytest.main(sys.argv[1:]))
