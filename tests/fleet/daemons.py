# SPDX-License-Identifier: Apache-2.0
"""What tests of daemons have in common."""

import os
import signal


class NotStarted(Exception):
    """A daemon can't be started here; the text says why."""


def kill(processes):
    for process in processes:
        try:
            os.kill(process, signal.SIGKILL)
        except ProcessLookupError:
            pass
