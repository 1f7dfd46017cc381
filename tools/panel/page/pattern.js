/** Patterns for entries of the journal, as `tavsim ctl wait` takes them. */
import { distance } from "./geo.js";
import { isTree, parsed } from "./json.js";

/** @typedef {import("./device.js").Entry} Entry */
/** @typedef {(entry: Entry) => boolean} Condition */

const WORD = /(?:[^\s"=]*=)?"(?:[^"\\]|\\.)*"?\S*|\S+/g;
const CONDITION = /^([^<>=]+)(<=|>=|<|>|=)([^]*)$/;
const COMPARISONS = /** @type {Object<string, (one: number, other: number) => boolean>} */ ({
    "<": (one, other) => one < other,
    "<=": (one, other) => one <= other,
    ">": (one, other) => one > other,
    ">=": (one, other) => one >= other,
});

/** @param {string} glob */
function expressionFor(glob) {
    const escaped = glob.replace(/[\\^$.|+()[\]{}]/g, "\\$&");
    return new RegExp(`^${escaped.replace(/\*/g, "[^]*").replace(/\?/g, "[^]")}$`, "u");
}

/**
 * What a text holds, if it is JSON.
 *
 * @param {any} value
 */
function inside(value) {
    const content = parsed(value);
    return content === undefined ? value : content;
}

/**
 * The value at the path; one of the reply's, where the entry has no such member.
 *
 * @param {Entry} entry
 * @param {string[]} path
 */
function valueAt(entry, [first, ...rest]) {
    const reply = inside(entry.reply);
    let value = first in entry || !isTree(reply) ? entry[first] : reply[first];
    for (const name of rest) {
        const content = inside(value);
        value = isTree(content) ? content[name] : undefined;
    }
    return value;
}

/** @param {any} value */
function isNumber(value) {
    return typeof value === "number" ||
        (typeof value === "string" && value.trim() !== "" && !Number.isNaN(Number(value)));
}

/**
 * @param {string[]} path
 * @param {string} glob
 * @returns {Condition}
 */
function isLike(path, glob) {
    const expression = expressionFor(glob);
    return (entry) => {
        const value = valueAt(entry, path);
        const text = typeof value === "string" ? value : JSON.stringify(value);
        return text !== undefined && expression.test(text);
    };
}

/**
 * @param {string} word
 * @returns {Condition | null}
 */
function readCondition(word) {
    const [, member = "", sign = "", written = ""] = CONDITION.exec(word) || [];
    const path = member.split(/[.[\]]+/).filter((name) => name !== "");
    const text = written.startsWith("\"") ? parsed(written) : written;
    if (typeof text !== "string" || path.length === 0) {
        return null;
    }
    if (sign === "=") {
        return isLike(path, text);
    }
    return !isNumber(text) ? null : (entry) => {
        const value = valueAt(entry, path);
        return isNumber(value) && COMPARISONS[sign](Number(value), Number(text));
    };
}

/**
 * @param {string | undefined} place
 * @param {string | undefined} metres
 * @returns {Condition | null}
 */
function readNear(place, metres) {
    const [latitude, longitude] = (place || "").split(",").map(Number);
    const most = parseFloat(metres || "");
    if ([latitude, longitude, most].some((number) => !Number.isFinite(number))) {
        return null;
    }
    return (entry) => {
        const fix = parsed(entry.reply);
        return isTree(fix) && typeof fix.latitude === "number" &&
            typeof fix.longitude === "number" && distance(fix, { latitude, longitude }) <= most;
    };
}

/**
 * Tells which entries match; null for a text that is no pattern. An empty one matches all.
 *
 * @param {string} text
 * @returns {Condition | null}
 */
export function readPattern(text) {
    const words = text.match(WORD) || [];
    /** @type {Condition[]} */
    const conditions = [];
    for (let word = words.shift(); word !== undefined; word = words.shift()) {
        const condition = word === "near" ? readNear(words.shift(), words.shift())
            : readCondition(word);
        if (!condition) {
            return null;
        }
        conditions.push(condition);
    }
    return (entry) => conditions.every((condition) => condition(entry));
}

/** @param {string} text */
function asWord(text) {
    return /^[^\s"]+$/.test(text) ? text : JSON.stringify(text);
}

/** Members that are others in each run, or that no pattern needs. */
const PASSING = ["at", "kind", "token", "payload", "reply", "option"];

/**
 * A pattern that the entry matches, and few others.
 *
 * @param {Entry} entry
 */
export function patternFor(entry) {
    const members = Object.entries(entry).filter(([name, value]) => !PASSING.includes(name) &&
        !isTree(value) && !(name === "outcome" && /^token /.test(value)));
    const reply = parsed(entry.reply);
    const values = isTree(reply) && !Array.isArray(reply) ? Object.entries(reply) : [];
    const ofReply = values.filter(([name, value]) => !isTree(value) && name !== "returnValue" &&
        /^[^\s.[\]<>="]+$/.test(name)).slice(0, 2);
    return [...members, ...ofReply.map(([name, value]) => ["reply." + name, value])]
        .map(([name, value]) => `${name}=${asWord(String(value))}`.replace(/\$\{/g, "$$$${"))
        .join(" ");
}
