#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# history_job.sh SCRIPTS RESULTS DB: the job after the array. It may run twice, as after a failure of its machine: a run is
# added once.
set -euo pipefail
exec "$1/add_results.sh" "$2" "$3"
