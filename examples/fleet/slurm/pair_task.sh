#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# pair_task.sh SCRIPTS LIST RESULTS: a task of the array, which works on one line of LIST. Slurm runs a copy of this script,
# so it is given the folder of the others.
set -euo pipefail
package=$(sed -n "${SLURM_ARRAY_TASK_ID}p" "$2")
exec "$1/process_pair.sh" "$package" "${package%.zanx}.mon" "$3/$(basename "$package" .zanx)"
