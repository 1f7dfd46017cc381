/** JSON as people read and write it: where it is wrong, and as a tree that unfolds. */
import { element } from "./dom.js";

const LONGEST_PREVIEW = 60;
// Blanks, a string, a number, a word, or a sign.
// eslint-disable-next-line no-control-regex
const TOKEN = /[ \t\r\n]+|"(?:[^"\\\u0000-\u001f]|\\(?:["\\/bfnrt]|u[0-9a-fA-F]{4}))*"|-?(?:0|[1-9][0-9]*)(?:\.[0-9]+)?(?:[eE][+-]?[0-9]+)?(?![0-9a-zA-Z.])|(?:true|false|null)(?![0-9a-zA-Z])|[{}[\],:]/y;

/** @typedef {{at: number, text: string}} Token */

class JsonError extends Error {
    /**
     * @param {number} at
     * @param {string} message
     */
    constructor(at, message) {
        super(message);
        this.at = at;
    }
}

/** @param {string} rest */
function complaintAbout(rest) {
    if (rest.startsWith("\"")) {
        return "this string does not end, or has a character that must be escaped";
    }
    if (rest.startsWith("'")) {
        return "strings are written in double quotes";
    }
    return /^[-0-9.]/.test(rest) ? "this is no number" : "this is no JSON value";
}

/** @param {string} text */
function tokensOf(text) {
    /** @type {Token[]} */
    const tokens = [];
    let at = 0;
    while (at < text.length) {
        TOKEN.lastIndex = at;
        const found = TOKEN.exec(text);
        if (!found) {
            throw new JsonError(at, complaintAbout(text.slice(at)));
        }
        if (found[0].trim() !== "") {
            tokens.push({ at, text: found[0] });
        }
        at += found[0].length;
    }
    tokens.push({ at: text.trimEnd().length, text: "" });
    return tokens;
}

/**
 * Takes the next token; the last one, which is empty, stays.
 *
 * @param {Token[]} tokens
 */
function next(tokens) {
    return /** @type {Token} */ (tokens.length > 1 ? tokens.shift() : tokens[0]);
}

/** @param {Token[]} tokens */
function checkValue(tokens) {
    const token = next(tokens);
    if (token.text === "{") {
        checkList(tokens, "}", checkMember);
    } else if (token.text === "[") {
        checkList(tokens, "]", checkValue);
    } else if ("}],:".includes(token.text)) {
        throw new JsonError(token.at, "a value is missing here");
    }
}

/** @param {Token[]} tokens */
function checkMember(tokens) {
    const name = next(tokens);
    if (!name.text.startsWith("\"")) {
        throw new JsonError(name.at, "a member's name in double quotes is missing here");
    }
    const colon = next(tokens);
    if (colon.text !== ":") {
        throw new JsonError(colon.at, "a colon is missing here");
    }
    checkValue(tokens);
}

/**
 * @param {Token[]} tokens
 * @param {string} end
 * @param {(tokens: Token[]) => void} checkOne
 */
function checkList(tokens, end, checkOne) {
    if (tokens[0].text === end) {
        next(tokens);
        return;
    }
    for (;;) {
        checkOne(tokens);
        const behind = next(tokens);
        if (behind.text === end) {
            return;
        }
        if (behind.text !== ",") {
            throw new JsonError(behind.at, `a comma or ${end} is missing here`);
        }
    }
}

/**
 * The first error with its place, or null where the text is JSON.
 *
 * @param {string} text
 */
export function findError(text) {
    try {
        const tokens = tokensOf(text);
        checkValue(tokens);
        if (tokens[0].text !== "") {
            throw new JsonError(tokens[0].at, "the value is over before this");
        }
        return null;
    } catch (error) {
        if (!(error instanceof JsonError)) {
            throw error;
        }
        const before = text.slice(0, error.at).split("\n");
        return { at: error.at, line: before.length, column: before[before.length - 1].length + 1,
            message: error.message };
    }
}

/**
 * The value of a text, or undefined where it is not JSON.
 *
 * @param {any} text
 */
export function parsed(text) {
    try {
        return typeof text === "string" ? JSON.parse(text) : undefined;
    } catch (error) {
        return undefined;
    }
}

/** @param {any} value */
export function isTree(value) {
    return typeof value === "object" && value !== null;
}

/**
 * Indented, if it is JSON.
 *
 * @param {string} text
 */
export function indented(text) {
    const value = parsed(text);
    return isTree(value) ? JSON.stringify(value, null, 2) : text;
}

/**
 * Line breaks of JSON stand between its tokens, where a blank does as well.
 *
 * @param {string} text
 */
export function onOneLine(text) {
    return text.trim().replace(/\s*\n\s*/g, " ");
}

/** @param {any} value */
function preview(value) {
    const text = JSON.stringify(value);
    return text.length > LONGEST_PREVIEW ? text.slice(0, LONGEST_PREVIEW) + "…" : text;
}

/**
 * @param {any} value
 * @param {string} [name]
 * @param {boolean} [isOpen]
 * @returns {HTMLElement}
 */
export function tree(value, name = "", isOpen = false) {
    const label = element("span", { className: "muted" }, name ? name + ": " : "");
    if (!isTree(value) || Object.keys(value).length === 0) {
        const text = element("span", { className: "json-" + typeof value }, JSON.stringify(value));
        return element("div", { className: "json" }, label, text);
    }
    const summary = element("summary", {}, label,
        element("span", { className: "json-preview" }, preview(value)));
    const details = element("details", { className: "json", open: isOpen }, summary);
    const fill = () => {
        if (details.open && details.childElementCount === 1) {
            details.append(...Object.keys(value).map((key) => tree(value[key], key)));
        }
    };
    details.addEventListener("toggle", fill);
    fill();
    return details;
}
