# SPDX-License-Identifier: Apache-2.0
"""Nothing but the version, which is written once for everything: in CMakeLists.txt."""

import re
from pathlib import Path

from setuptools import setup

text = Path(__file__).resolve().parent.with_name("CMakeLists.txt").read_text(encoding="utf-8")
setup(version=re.search(r"project\(qbobj VERSION ([0-9.]+)", text).group(1))
