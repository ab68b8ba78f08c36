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

-- The text of bytes in hexadecimal digits. What is no text to the server stays as digits.
CREATE FUNCTION pg_temp.text_of(digits text) RETURNS text LANGUAGE plpgsql AS $$
BEGIN
    RETURN convert_from(decode(digits, 'hex'), 'UTF8');
EXCEPTION WHEN OTHERS THEN
    RETURN '\x' || digits;
END
$$;

CREATE TEMPORARY TABLE new_run (number integer, id text) ON COMMIT DROP;
WITH added AS (
    INSERT INTO history.run (id, date, input)
    SELECT id, date, pg_temp.text_of(input) FROM staged_run ORDER BY number
    ON CONFLICT DO NOTHING
    RETURNING number, id
)
INSERT INTO new_run SELECT number, id FROM added;

INSERT INTO history.label (run, name, value)
SELECT r.number, pg_temp.text_of(l.name), pg_temp.text_of(l.value)
FROM staged_label l
JOIN staged_run s ON s.number = l.run
JOIN history.run r ON r.id = s.id
ON CONFLICT DO NOTHING;

UPDATE staged_series SET kernel = pg_temp.text_of(kernel), name = pg_temp.text_of(name);
INSERT INTO history.series (scope, kernel, name, metric)
SELECT scope, kernel, name, metric FROM staged_series ORDER BY number
ON CONFLICT DO NOTHING;

-- Numbers of the history, and those of the server. Without statistics the last join would look up each value.
CREATE TEMPORARY TABLE run_number ON COMMIT DROP AS
SELECT s.number AS staged, n.number FROM staged_run s JOIN new_run n ON n.id = s.id;
CREATE TEMPORARY TABLE series_number ON COMMIT DROP AS
SELECT t.number AS staged, k.number
FROM staged_series t
JOIN history.series k ON k.scope = t.scope AND k.kernel = t.kernel AND k.name = t.name AND k.metric = t.metric;
ANALYZE run_number, series_number, staged_value;

-- In the order of the key, whose index then is built from one end to the other.
INSERT INTO history.value (series, run, value)
SELECT t.number, r.number, v.value
FROM staged_value v
JOIN run_number r ON r.staged = v.run
JOIN series_number t ON t.staged = v.series
ORDER BY t.number, r.number
ON CONFLICT DO NOTHING;
DROP FUNCTION pg_temp.text_of;
COMMIT;
