-- SPDX-License-Identifier: Apache-2.0
-- The tables of a team's server, for PostgreSQL 15 or newer: `psql -f schema.sql`. It may run again; what is there stays.
--
-- history has the tables of a history, without the summaries; export those of `zanl-profile export`, each run with the date
-- that it was loaded with. Texts sort by their bytes, as in SQLite.
\set ON_ERROR_STOP on
BEGIN;

CREATE SCHEMA IF NOT EXISTS history;
CREATE TABLE IF NOT EXISTS history.run (
    number integer GENERATED ALWAYS AS IDENTITY PRIMARY KEY,
    id text COLLATE "C" NOT NULL UNIQUE,
    date text COLLATE "C" NOT NULL,
    input text COLLATE "C" NOT NULL
);
CREATE INDEX IF NOT EXISTS run_of_date ON history.run (date, number);
CREATE TABLE IF NOT EXISTS history.label (
    run integer NOT NULL REFERENCES history.run,
    name text COLLATE "C" NOT NULL,
    value text COLLATE "C" NOT NULL,
    PRIMARY KEY (run, name)
);
CREATE INDEX IF NOT EXISTS label_of_value ON history.label (name, value, run);
CREATE TABLE IF NOT EXISTS history.series (
    number integer GENERATED ALWAYS AS IDENTITY PRIMARY KEY,
    scope text COLLATE "C" NOT NULL,
    kernel text COLLATE "C" NOT NULL,
    name text COLLATE "C" NOT NULL,
    metric text COLLATE "C" NOT NULL,
    UNIQUE (scope, kernel, name, metric)
);
CREATE TABLE IF NOT EXISTS history.value (
    series integer NOT NULL,
    run integer NOT NULL,
    value double precision NOT NULL,
    PRIMARY KEY (series, run)
);

CREATE SCHEMA IF NOT EXISTS export;
CREATE TABLE IF NOT EXISTS export.run (
    run_id bigint PRIMARY KEY, run_date date NOT NULL, schema_version bigint, input text, program_version text,
    package_version text, board text, clock_mhz double precision, tick_ns double precision, start_ticks bigint,
    num_nan bigint, num_inf bigint, span_ns double precision, span_ticks double precision
);
CREATE TABLE IF NOT EXISTS export.kernel (
    run_id bigint, kernel_id bigint, name text, compute_unit bigint, device bigint, file text, line bigint, autorun bigint,
    invocations bigint, samples bigint, culprit text, kernel_time_ns double precision, kernel_time_ticks double precision,
    kernel_total_ns double precision, kernel_total_ticks double precision, kernel_p95_ns double precision,
    kernel_p95_ticks double precision, busy_percent double precision, alone_percent double precision,
    waiting_percent double precision,
    PRIMARY KEY (run_id, kernel_id)
);
CREATE TABLE IF NOT EXISTS export.invocation (
    run_id bigint, invocation_id bigint, kernel_id bigint, start_ticks bigint, end_ticks bigint, samples bigint,
    PRIMARY KEY (run_id, invocation_id)
);
CREATE TABLE IF NOT EXISTS export.block (
    run_id bigint, block_id bigint, kernel_id bigint, place bigint, name text, kind text, memory_id bigint, file text,
    line bigint, call_chain text, rule text, sentence text, stall_percent double precision, valid_percent double precision,
    idle_percent double precision, lost_ns double precision, lost_ticks double precision, iteration_cycles double precision,
    net_cycles double precision, bandwidth_mb_per_s double precision, bandwidth_max_mb_per_s double precision,
    moved_bytes double precision, efficiency_percent double precision, hits_percent double precision,
    unaligned_percent double precision, fill_words double precision, fill_share_percent double precision,
    max_fill_words double precision, burst_words double precision, burst_share_percent double precision,
    memory_use_percent double precision, port_use_percent double precision,
    PRIMARY KEY (run_id, block_id)
);
CREATE TABLE IF NOT EXISTS export.memory (
    run_id bigint, memory_id bigint, name text, peak_mb_per_s double precision, largest_burst_words double precision,
    lower_bound bigint, memory_mean_mb_per_s double precision, memory_max_mb_per_s double precision,
    memory_full_percent double precision,
    PRIMARY KEY (run_id, memory_id)
);
CREATE TABLE IF NOT EXISTS export.port (
    run_id bigint, port_id bigint, kernel_id bigint, memory_id bigint, interface text, name text, reads bigint, writes bigint,
    PRIMARY KEY (run_id, port_id)
);
CREATE TABLE IF NOT EXISTS export.transfer (
    run_id bigint, transfer_id bigint, type text, device bigint, queue bigint, start_ticks bigint, end_ticks bigint,
    PRIMARY KEY (run_id, transfer_id)
);

-- The samples have no key: it would take as much space as they do. The key of export.run keeps a run from being loaded
-- twice. Columns go from long to short, which saves eight bytes a row.
CREATE TABLE IF NOT EXISTS export.sample (
    run_id bigint NOT NULL, t bigint, value double precision, run_date date NOT NULL, invocation_id integer NOT NULL,
    block_id integer, i integer NOT NULL, metric text NOT NULL
) PARTITION BY RANGE (run_date);
CREATE TABLE IF NOT EXISTS export.port_sample (
    run_id bigint NOT NULL, t bigint, value double precision, run_date date NOT NULL, invocation_id integer NOT NULL,
    port_id integer NOT NULL, i integer NOT NULL, metric text NOT NULL
) PARTITION BY RANGE (run_date);
-- Of ranges of pages: rows of a run lie side by side, so this index stays tiny.
CREATE INDEX IF NOT EXISTS sample_of_run ON export.sample USING brin (run_id) WITH (autosummarize = on);
CREATE INDEX IF NOT EXISTS port_sample_of_run ON export.port_sample USING brin (run_id) WITH (autosummarize = on);

-- Makes the partitions of the month of that day and of the months after it, where they are missing: sample_2026_11 and
-- port_sample_2026_11. Loads do so for their own month; a role that may not make tables needs them made before.
CREATE OR REPLACE FUNCTION export.make_months(day date, num_months integer DEFAULT 1) RETURNS void LANGUAGE plpgsql AS $$
DECLARE
    month date;
    table_name text;
    partition_name text;
BEGIN
    FOR number IN 0 .. num_months - 1 LOOP
        month := date_trunc('month', day) + make_interval(months => number);
        FOREACH table_name IN ARRAY ARRAY['sample', 'port_sample'] LOOP
            partition_name := table_name || to_char(month, '_YYYY_MM');
            CONTINUE WHEN to_regclass('export.' || partition_name) IS NOT NULL;
            -- Two loads may want the same month.
            PERFORM pg_advisory_xact_lock(hashtext('export.make_months'));
            EXECUTE format('CREATE TABLE IF NOT EXISTS export.%I PARTITION OF export.%I FOR VALUES FROM (%L) TO (%L)',
                           partition_name, table_name, month, (month + interval '1 month')::date);
        END LOOP;
    END LOOP;
END
$$;

COMMIT;
