-- SPDX-License-Identifier: Apache-2.0
-- Loads the tables of a history, which load_history.sh has written as CSV files, into those of schema.sql. Numbers of runs and
-- series are others there, as several histories may be loaded.
\set ON_ERROR_STOP on
\set QUIET on
-- \copy takes no variables.
\cd :folder
BEGIN;

CREATE TEMPORARY TABLE staged_run (number bigint, id text, date text, input text) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_label (run bigint, name text, value text) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_series (number bigint, scope text, kernel text, name text, metric text) ON COMMIT DROP;
CREATE TEMPORARY TABLE staged_value (series bigint, run bigint, value double precision) ON COMMIT DROP;
-- sqlite3 writes an empty text as "", which is no null.
\copy staged_run FROM 'run.csv' WITH (FORMAT csv)
\copy staged_label FROM 'label.csv' WITH (FORMAT csv)
\copy staged_series FROM 'series.csv' WITH (FORMAT csv)
\copy staged_value FROM 'value.csv' WITH (FORMAT csv)

CREATE TEMPORARY TABLE new_run (number bigint, id text) ON COMMIT DROP;
WITH added AS (
    INSERT INTO history.run (id, date, input)
    SELECT id, date, input FROM staged_run ORDER BY number
    ON CONFLICT DO NOTHING
    RETURNING number, id
)
INSERT INTO new_run SELECT number, id FROM added;

INSERT INTO history.label (run, name, value)
SELECT r.number, l.name, l.value
FROM staged_label l
JOIN staged_run s ON s.number = l.run
JOIN history.run r ON r.id = s.id
ON CONFLICT DO NOTHING;

INSERT INTO history.series (scope, kernel, name, metric)
SELECT scope, kernel, name, metric FROM staged_series ORDER BY number
ON CONFLICT DO NOTHING;

ANALYZE staged_value;
INSERT INTO history.value (series, run, value)
SELECT k.number, n.number, v.value
FROM staged_value v
JOIN staged_run s ON s.number = v.run
JOIN new_run n ON n.id = s.id
JOIN staged_series t ON t.number = v.series
JOIN history.series k ON k.scope = t.scope AND k.kernel = t.kernel AND k.name = t.name AND k.metric = t.metric
ORDER BY k.number, n.number
ON CONFLICT DO NOTHING;
COMMIT;
