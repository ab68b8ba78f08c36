-- SPDX-License-Identifier: Apache-2.0
-- Loads the export of one run into the tables of schema.sql, whole or not at all:
--
--     psql -v date=2026-11-22 -v folder=csv/7 -f load_export.sql
--
-- An export has no date, so the variable says to which month the run's samples belong. A run that is there already stays as it
-- is; another run with its number is refused.
\set ON_ERROR_STOP on
\set QUIET on
-- \copy takes no variables.
\cd :folder
-- On its own, as the tables are locked until it ends.
SELECT export.make_months(:'date') \g /dev/null
BEGIN;

CREATE TEMPORARY TABLE staged_run (LIKE export.run) ON COMMIT DROP;
ALTER TABLE staged_run DROP COLUMN run_date;
CREATE TEMPORARY TABLE staged_kernel (LIKE export.kernel) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_invocation (LIKE export.invocation) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_block (LIKE export.block) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_memory (LIKE export.memory) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_port (LIKE export.port) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_transfer (LIKE export.transfer) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_sample (
    run_id bigint NOT NULL, invocation_id integer, block_id integer, metric text, i integer, t bigint, value double precision
) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_port_sample (
    run_id bigint NOT NULL, invocation_id integer, port_id integer, metric text, i integer, t bigint, value double precision
) ON COMMIT DROP;

-- An export of another version of the schema has other columns, and fails here.
\copy staged_run FROM 'run.csv' WITH (FORMAT csv, HEADER match)
\copy staged_kernel FROM 'kernel.csv' WITH (FORMAT csv, HEADER match)
\copy staged_invocation FROM 'invocation.csv' WITH (FORMAT csv, HEADER match)
\copy staged_block FROM 'block.csv' WITH (FORMAT csv, HEADER match)
\copy staged_memory FROM 'memory.csv' WITH (FORMAT csv, HEADER match)
\copy staged_port FROM 'port.csv' WITH (FORMAT csv, HEADER match)
\copy staged_transfer FROM 'transfer.csv' WITH (FORMAT csv, HEADER match)

-- Now no other load can add a run with this number before this one ends.
CREATE TEMPORARY TABLE new_run (run_id bigint) ON COMMIT DROP;
WITH added AS (
    INSERT INTO export.run (run_id, run_date, schema_version, input, program_version, package_version, board, clock_mhz,
                            tick_ns, start_ticks, num_nan, num_inf, span_ns, span_ticks)
    SELECT run_id, :'date'::date, schema_version, input, program_version, package_version, board, clock_mhz, tick_ns,
           start_ticks, num_nan, num_inf, span_ns, span_ticks
    FROM staged_run
    ON CONFLICT DO NOTHING
    RETURNING run_id
)
INSERT INTO new_run SELECT run_id FROM added;

SELECT count(*) > 0 AS is_new FROM new_run \gset
\if :is_new
INSERT INTO export.kernel SELECT * FROM staged_kernel ON CONFLICT DO NOTHING;
INSERT INTO export.invocation SELECT * FROM staged_invocation ON CONFLICT DO NOTHING;
INSERT INTO export.block SELECT * FROM staged_block ON CONFLICT DO NOTHING;
INSERT INTO export.memory SELECT * FROM staged_memory ON CONFLICT DO NOTHING;
INSERT INTO export.port SELECT * FROM staged_port ON CONFLICT DO NOTHING;
INSERT INTO export.transfer SELECT * FROM staged_transfer ON CONFLICT DO NOTHING;
\copy staged_sample FROM 'sample.csv' WITH (FORMAT csv, HEADER match)
\copy staged_port_sample FROM 'port_sample.csv' WITH (FORMAT csv, HEADER match)
INSERT INTO export.sample (run_id, t, value, run_date, invocation_id, block_id, i, metric)
SELECT s.run_id, s.t, s.value, :'date'::date, s.invocation_id, s.block_id, s.i, s.metric
FROM staged_sample s
JOIN new_run n ON n.run_id = s.run_id;
INSERT INTO export.port_sample (run_id, t, value, run_date, invocation_id, port_id, i, metric)
SELECT s.run_id, s.t, s.value, :'date'::date, s.invocation_id, s.port_id, s.i, s.metric
FROM staged_port_sample s
JOIN new_run n ON n.run_id = s.run_id;
\endif

DO $$
BEGIN
    -- Names of files and metrics may differ: the run may have been exported at another place, by another version.
    IF EXISTS (SELECT run_id, package_version, board, clock_mhz, start_ticks, span_ns, span_ticks FROM staged_run
               EXCEPT SELECT run_id, package_version, board, clock_mhz, start_ticks, span_ns, span_ticks FROM export.run
               WHERE run_id IN (SELECT run_id FROM staged_run))
       OR EXISTS (SELECT * FROM staged_invocation
                  EXCEPT SELECT * FROM export.invocation WHERE run_id IN (SELECT run_id FROM staged_run)) THEN
        RAISE EXCEPTION 'another run has the number %; export with another --run-id', (SELECT run_id FROM staged_run);
    END IF;
END
$$;
COMMIT;
