// SPDX-License-Identifier: Apache-2.0
// From facts to a sentence, by the table of rules that the program reads too. The numbers in a sentence are written
// as the program writes them, in plain ASCII.

import { fixed_text, decimals_for, is_known, number_text, trimmed_text, whole_text } from "./format.js";

/** @typedef {import("./types.d.ts").Facts} Facts */
/** @typedef {[string, string, (string | number)?]} Condition */
/** @typedef {{name: string, kind?: string, tone?: string, rules?: string[], when: Condition[], text: string}} Rule */
/**
 * @typedef {object} RuleTable
 * @property {Record<string, number>} thresholds
 * @property {Record<string, string>} formats
 * @property {{name: string, when: Condition[], then: string, else: string}[]} words
 * @property {Rule[]} rules
 * @property {Record<string, Rule[]>} answers
 */
/** @typedef {{rule: string, tone: string, text: string}} Sentence */

/** @param {number} nanoseconds @param {number} digits */
function time_of_digits(nanoseconds, digits) {
    if (!Number.isFinite(nanoseconds)) return "-";
    const units = /** @type {[number, string][]} */ ([[1, "ns"], [1e3, "us"], [1e6, "ms"], [1e9, "s"]]);
    const [size, name] = units.find(([s]) => Math.abs(nanoseconds) / s < 999.5) ?? units[3];
    const value = nanoseconds / size;
    const decimals = size === 1 ? 0 : decimals_for(value, digits);
    return `${decimals === 0 ? whole_text(value) : fixed_text(value, decimals)} ${name}`;
}

/** @type {Record<string, (value: number, has_unit: boolean) => string>} */
const writers = {
    percent: (value) => fixed_text(value, decimals_for(value, 2)) + (Number.isFinite(value) ? "%" : ""),
    time: (value, has_unit) => has_unit ? time_of_digits(value, 3) : whole_text(value),
    short_time: (value, has_unit) => has_unit ? time_of_digits(value, 2) : whole_text(value),
    number: number_text,
    decimal: (value) => trimmed_text(value, 2),
    count: whole_text,
};

/** The number of a fact: flags are 0 and 1. @param {Facts} facts @param {string} name @returns {number | null} */
function number_of(facts, name) {
    const value = facts[name];
    if (typeof value === "boolean") return value ? 1 : 0;
    return typeof value === "number" && is_known(value) ? value : null;
}

/** @param {RuleTable} table @param {Condition[]} conditions @param {Facts} facts */
export function holds(table, conditions, facts) {
    return conditions.every(([name, comparison, limit]) => {
        const value = number_of(facts, name);
        if (value === null || comparison === "unknown") return value === null && comparison === "unknown";
        const bound = typeof limit === "string" ? table.thresholds[limit] : Number(limit);
        switch (comparison) {
            case ">=": return value >= bound;
            case ">": return value > bound;
            case "<": return value < bound;
            default: return value === bound;
        }
    });
}

/** "global" is for "global read". @param {string | undefined} rule_kind @param {string} kind */
function is_for_kind(rule_kind, kind) {
    return !rule_kind || rule_kind === "all" || rule_kind === kind || kind.startsWith(rule_kind + " ");
}

/** Nothing if a value is missing. @param {RuleTable} table @param {string} text @param {Facts} facts @returns {string | null} */
function filled(table, text, facts) {
    let whole = true;
    const result = text.replace(/\{(\w+)\}/g, (_, name) => {
        const words = table.words.find((entry) => entry.name === name);
        if (words) return holds(table, words.when, facts) ? words.then : words.else;
        const format = table.formats[name];
        if (format) {
            const value = number_of(facts, name);
            if (value !== null) return writers[format](value, facts.time_unit_known !== false);
        } else if (typeof facts[name] === "string" && facts[name] !== "") {
            return String(facts[name]);
        }
        whole = false;
        return "";
    });
    return whole ? result : null;
}

/** The sentence, with each part in brackets that has all its values. @param {RuleTable} table @param {string} text @param {Facts} facts */
function written(table, text, facts) {
    let result = "";
    // The brackets of the table, split off before names are filled in, which may have brackets of their own.
    for (const part of text.split(/(\[[^\]]*\])/)) {
        const optional = part.startsWith("[");
        const done = filled(table, optional ? part.slice(1, -1) : part, facts);
        if (done === null && !optional) return null;
        result += done ?? "";
    }
    return result;
}

/**
 * The sentence of the first rule whose conditions hold and whose values are all known, and of those of the tone "added".
 * @param {RuleTable} table @param {Rule[]} list @param {Facts} facts
 * @param {string} kind of the block: "global read", "loop", ...
 * @param {string} [culprit_rule] the rule that holds for the culprit, where a question is answered
 * @returns {Sentence}
 */
export function judge(table, list, facts, kind, culprit_rule = "") {
    /** @type {Sentence | null} */
    let found = null;
    let added = "";
    for (const rule of list) {
        const is_added = rule.tone === "added";
        if (found && !is_added) continue;
        if (!is_for_kind(rule.kind, kind) || !holds(table, rule.when, facts)) continue;
        if (rule.rules && !rule.rules.includes(culprit_rule)) continue;
        const text = written(table, rule.text, facts);
        if (text === null) continue;
        if (is_added) added += "; " + text;
        else found = { rule: rule.name, tone: rule.tone ?? "none", text };
    }
    return found ? { ...found, text: found.text + added } : { rule: "", tone: "none", text: "" };
}
