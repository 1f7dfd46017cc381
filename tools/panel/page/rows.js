/** The rows of the journal's list: one for each entry, or for several that repeat it. */
import { element, replaceChildren } from "./dom.js";
import { createExchanges } from "./exchanges.js";
import { parsed, isTree, tree } from "./json.js";

/** @typedef {import("./device.js").Entry} Entry */
/**
 * @typedef {Object} Row
 * @property {Entry[]} group
 * @property {HTMLElement} item
 * @property {HTMLDetailsElement} details
 * @property {(entry: Entry) => void} repeat
 * @property {() => void} showNote
 */

const SUBJECTS = ["uri", "key", "function", "input", "method", "text", "visible", "orientation",
    "enable", "aggression"];
const MOST_INNER_ROWS = 50;

/** @param {number} milliseconds */
export function timeText(milliseconds) {
    const minutes = Math.floor(milliseconds / 60000);
    const seconds = (milliseconds % 60000 / 1000).toFixed(3).padStart(6, "0");
    return `${minutes}:${seconds}`;
}

/** @param {Entry} entry */
function subjectOf(entry) {
    if (entry.what === "compass reading") {
        return `${Number(entry.doubleValue1).toFixed(1)}°`;
    }
    const name = SUBJECTS.find((one) => one in entry);
    const token = entry.what === "cancel" ? `token ${entry.token}` : "";
    return name ? String(entry[name]) : token;
}

/** @param {Entry} entry */
function outcomeOf(entry) {
    const text = String(entry.outcome === undefined ? "" : entry.outcome);
    return text.startsWith("token ") ? "" : text;
}

/**
 * Whether the entry repeats the one before it, as readings and the replies of a clock do.
 *
 * @param {Entry} before
 * @param {Entry} entry
 */
function repeats(before, entry) {
    return ["compass reading", "reply"].includes(entry.what) && entry.what === before.what &&
        entry.token === before.token;
}

/** @param {Entry} entry */
function members(entry) {
    return Object.entries(entry).filter(([name]) => !["at", "kind", "what"].includes(name))
        .map(([name, value]) => {
            const content = parsed(value);
            return tree(isTree(content) ? content : value, name, isTree(content));
        });
}

/**
 * @param {Entry} entry
 * @param {string} note
 */
function createSummary(entry, note) {
    const outcome = outcomeOf(entry);
    const isBad = /refused|not found|exception|no such/.test(outcome);
    const parts = {
        time: element("span", { className: "entry-time muted mono small" }, timeText(entry.at)),
        count: element("span", { className: "muted small" }),
        subject: element("span", { className: "muted mono one-line" }, subjectOf(entry)),
        note: element("span", { className: "entry-note muted small" }, note),
    };
    const summary = element("summary", {}, parts.time,
        element("span", { className: "kind kind-" + entry.kind }, entry.kind),
        element("span", { className: "one-line", title: entry.what }, entry.what, parts.count),
        parts.subject, parts.note,
        element("span", { className: isBad ? "error" : "" }, outcome));
    return { ...parts, summary };
}

/**
 * @param {HTMLElement} list
 * @param {(entry: Entry) => void} expectThis
 */
export function createRows(list, expectThis) {
    const exchanges = createExchanges();
    /** @type {Map<Entry, Row>} the rows of the requests */
    const requests = new Map();
    /** @type {Row[]} */
    let rows = [];

    /** @param {Entry} entry */
    function contentOf(entry) {
        const expect = element("button", { type: "button", className: "small-button" },
            "Expect this");
        expect.addEventListener("click", () => expectThis(entry));
        const others = exchanges.others(entry).map((other) => element("div",
            { className: "joined" },
            element("h3", {}, `${other.what} at ${timeText(other.at)}`), ...members(other)));
        return element("div", { className: "entry-content column" },
            ...members(entry), ...others, expect);
    }

    /**
     * What an unfolded row shows: the entry, or a row for each of several.
     *
     * @param {Row} row
     */
    function fill({ details, group }) {
        const [summary] = details.children;
        if (!details.open) {
            replaceChildren(details, [summary]);
        } else if (group.length === 1) {
            replaceChildren(details, [summary, contentOf(group[0])]);
        } else {
            const inner = group.slice(-MOST_INNER_ROWS).map((entry) => createRow(entry).item);
            replaceChildren(details,
                [summary, element("ol", { className: "entries inner" }, ...inner)]);
        }
    }

    /**
     * @param {Entry} entry
     * @returns {Row}
     */
    function createRow(entry) {
        const { summary, time, count, subject, note } = createSummary(entry, exchanges.note(entry));
        const group = [entry];
        const details = element("details", {}, summary);
        const row = {
            group,
            details,
            item: element("li", {}, details),
            repeat: (/** @type {Entry} */ next) => {
                group.push(next);
                count.textContent = ` × ${group.length}`;
                time.textContent = timeText(next.at);
                subject.textContent = subjectOf(next);
                note.textContent = exchanges.note(next);
            },
            showNote: () => {
                note.textContent = exchanges.note(entry);
            },
        };
        details.addEventListener("toggle", () => fill(row));
        return row;
    }

    /** @param {Entry} entry */
    function add(entry) {
        const last = rows[rows.length - 1];
        if (last && !last.details.open && repeats(last.group[0], entry)) {
            last.repeat(entry);
            return [];
        }
        const row = createRow(entry);
        const exchange = exchanges.of(entry);
        if (exchange && exchange.request === entry) {
            requests.set(entry, row);
        }
        rows.push(row);
        return [row.item];
    }

    return {
        /**
         * Remembers which replies belong to which request.
         *
         * @param {Entry[]} entries
         */
        join: (entries) => {
            for (const entry of entries) {
                exchanges.add(entry);
                const exchange = exchanges.of(entry);
                const row = exchange && requests.get(exchange.request);
                if (row) {
                    row.showNote();
                }
            }
        },
        /**
         * @param {Entry[]} entries
         * @param {number} most the number of rows beyond which the first ones go
         */
        add: (entries, most) => {
            list.append(...entries.flatMap(add));
            for (const row of rows.splice(0, Math.max(0, rows.length - most))) {
                row.item.remove();
                requests.delete(row.group[0]);
            }
        },
        /** How many entries there are in the list. */
        count: () => rows.reduce((sum, { group }) => sum + group.length, 0),
        clear: () => {
            rows = [];
            requests.clear();
            replaceChildren(list, []);
        },
        forget: exchanges.forget,
    };
}
