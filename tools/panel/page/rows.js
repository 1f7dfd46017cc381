/** The rows of the journal's list: one for each entry, or for several like it in a row. */
import { element, replaceChildren } from "./dom.js";
import { parsed, isTree, tree } from "./json.js";

/** @typedef {import("./device.js").Entry} Entry */
/** @typedef {{request: Entry, replies: Entry[]}} Exchange */

const SUBJECTS = ["uri", "key", "function", "input", "method", "text", "visible", "orientation",
    "enable", "aggression", "doubleValue1"];

/** @param {number} milliseconds */
export function timeText(milliseconds) {
    const minutes = Math.floor(milliseconds / 60000);
    const seconds = (milliseconds % 60000 / 1000).toFixed(3).padStart(6, "0");
    return `${minutes}:${seconds}`;
}

/** @param {Entry} entry */
function subjectOf(entry) {
    const name = SUBJECTS.find((one) => one in entry);
    const token = entry.what === "cancel" ? `token ${entry.token}` : "";
    return name ? String(entry[name]) : token;
}

/** @param {Entry} entry */
function tokenOf(entry) {
    const found = /^token (\d+)$/.exec(entry.outcome || "");
    return found ? Number(found[1]) : entry.token;
}

/** @param {Entry} entry */
function signature(entry) {
    return [entry.kind, entry.what, entry.uri, entry.level].join("\n");
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
 * @param {HTMLElement} list
 * @param {(entry: Entry) => void} expectThis
 */
export function createRows(list, expectThis) {
    /** @type {Map<number, Exchange>} */
    const exchanges = new Map();
    /** @type {Map<number, HTMLElement>} where a request's row tells of its replies */
    const notes = new Map();
    /** @type {{group: Entry[], count: HTMLElement, time: HTMLElement, subject: HTMLElement, details: HTMLDetailsElement} | null} */
    let last = null;

    /**
     * @param {Entry} entry
     * @param {HTMLElement} note
     */
    function tellOfExchange(entry, note) {
        const exchange = exchanges.get(tokenOf(entry));
        if (!exchange) {
            return;
        }
        const { request, replies } = exchange;
        if (request === entry) {
            const number = replies.length === 1 ? "1 reply" : `${replies.length} replies`;
            note.textContent = replies.length > 0 ? number : "open";
        } else if (entry.what === "reply") {
            note.textContent = `after ${entry.at - request.at} ms`;
        }
    }

    /** @param {Entry} entry */
    function joined(entry) {
        const exchange = exchanges.get(tokenOf(entry));
        if (!exchange) {
            return [];
        }
        const { request, replies } = exchange;
        const others = request === entry ? replies.slice(-20) : [request];
        return others.map((other) => element("div", { className: "joined" },
            element("h3", {}, `${other.what} at ${timeText(other.at)}`), ...members(other)));
    }

    /** @param {Entry} entry */
    function contentOf(entry) {
        const expect = element("button", { type: "button", className: "small-button" },
            "Expect this");
        expect.addEventListener("click", () => expectThis(entry));
        return element("div", { className: "entry-content" }, ...members(entry), ...joined(entry),
            expect);
    }

    /**
     * What an unfolded row shows: the entry, or a row for each of several.
     *
     * @param {HTMLDetailsElement} details
     * @param {Entry[]} group
     */
    function fill(details, group) {
        while (details.childElementCount > 1) {
            details.lastElementChild.remove();
        }
        if (details.open && group.length === 1) {
            details.append(contentOf(group[0]));
        } else if (details.open) {
            details.append(element("ol", { className: "entries inner" },
                ...group.slice(-50).map((entry) => rowFor([entry]).item)));
        }
    }

    /** @param {Entry[]} group */
    function rowFor(group) {
        const entry = group[group.length - 1];
        const time = element("span", { className: "entry-time mono" }, timeText(entry.at));
        const subject = element("span", { className: "entry-subject mono" }, subjectOf(entry));
        const count = element("span", { className: "entry-count" });
        const note = element("span", { className: "entry-note" });
        const outcome = /^token /.test(entry.outcome || "") ? "" : entry.outcome || "";
        const isRefused = /refused|not found|exception|no such/.test(outcome);
        const summary = element("summary", {}, time,
            element("span", { className: "kind kind-" + entry.kind }, entry.kind),
            element("span", { className: "entry-what" }, entry.what, count), subject, note,
            element("span", { className: isRefused ? "entry-outcome bad" : "entry-outcome" },
                outcome));
        const details = element("details", {}, summary);
        details.addEventListener("toggle", () => fill(details, group));
        tellOfExchange(entry, note);
        if (exchanges.has(tokenOf(entry)) && exchanges.get(tokenOf(entry)).request === entry) {
            notes.set(tokenOf(entry), note);
        }
        return { item: element("li", {}, details), details, count, time, subject, group };
    }

    /** @param {Entry} entry */
    function addToLast(entry) {
        last.group.push(entry);
        last.count.textContent = ` × ${last.group.length}`;
        last.time.textContent = timeText(entry.at);
        last.subject.textContent = subjectOf(entry);
    }

    return {
        /**
         * Remembers which replies belong to which request.
         *
         * @param {Entry[]} entries
         */
        join: (entries) => {
            for (const entry of entries) {
                const token = tokenOf(entry);
                const exchange = exchanges.get(token);
                if (token !== undefined && entry.outcome && /^token /.test(entry.outcome)) {
                    exchanges.set(token, { request: entry, replies: [] });
                } else if (exchange && entry.what === "reply") {
                    exchange.replies.push(entry);
                    tellOfExchange(exchange.request, notes.get(token) || element("span"));
                }
            }
        },
        /**
         * @param {Entry[]} entries
         * @param {number} most the number of rows beyond which the first ones go
         */
        add: (entries, most) => {
            const made = document.createDocumentFragment();
            for (const entry of entries) {
                if (last && !last.details.open && signature(last.group[0]) === signature(entry)) {
                    addToLast(entry);
                } else {
                    last = rowFor([entry]);
                    made.append(last.item);
                }
            }
            list.append(made);
            while (list.childElementCount > most) {
                list.firstElementChild.remove();
            }
        },
        clear: () => {
            last = null;
            notes.clear();
            replaceChildren(list, []);
        },
        forget: () => exchanges.clear(),
    };
}
