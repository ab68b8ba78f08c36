// SPDX-License-Identifier: Apache-2.0
// Asks DuckDB the queries of standard input, a JSON array, in the folder that is named, and prints the rows of each as JSON.

import { readFileSync } from "node:fs";
import { DuckDBInstance } from "@duckdb/node-api";

process.chdir(process.argv[2]);
const connection = await (await DuckDBInstance.create(":memory:")).connect();
const answers = [];
for (const query of JSON.parse(readFileSync(0, "utf8"))) answers.push((await connection.runAndReadAll(query)).getRows());
console.log(JSON.stringify(answers, (_, value) => (typeof value === "bigint" ? Number(value) : value)));
