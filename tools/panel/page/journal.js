/** The journal: what the application did to the device, and what it received; and a line for any
 * command, as `tavsim ctl` takes it. */
import { byId, element, replaceChildren } from "./dom.js";
import { messageOf } from "./device.js";
import { readPattern } from "./pattern.js";
import { createRows } from "./rows.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").Entry} Entry */

const KINDS = ["bus", "host", "sdl", "device", "page"];
const MOST_KEPT = 20000;
const PAGE_SIZE = 500;
const PATIENCE = 250;

/**
 * @param {Device} device
 * @param {(entry: Entry) => void} expectThis
 */
export function setUpJournal(device, expectThis) {
    const list = byId("entries", HTMLElement);
    const earlier = byId("earlier", HTMLButtonElement);
    const count = byId("journal-count", HTMLElement);
    const rows = createRows(list, expectThis);
    const hidden = new Set();
    /** @type {Entry[]} */
    let entries = [];
    /** @type {(entry: Entry) => boolean} */
    let matches = () => true;
    let mostShown = PAGE_SIZE;
    let total = 0;
    let follows = true;

    /** @param {Entry} entry */
    function isShown(entry) {
        return !hidden.has(entry.kind) && matches(entry);
    }

    function scrollToEnd() {
        list.scrollTop = list.scrollHeight;
        follows = true;
    }

    function tellCount() {
        earlier.hidden = total <= rows.count();
        count.textContent = total === entries.length ? `${total}` : `${total} of ${entries.length}`;
        count.title = "Entries";
    }

    function showAll() {
        const shown = entries.filter(isShown);
        rows.clear();
        rows.add(shown.slice(-mostShown), Infinity);
        total = shown.length;
        tellCount();
        scrollToEnd();
    }

    /** @param {Entry[]} added */
    function add(added) {
        entries = entries.concat(added).slice(-MOST_KEPT);
        rows.join(added);
        const shown = added.filter(isShown);
        rows.add(shown, follows ? mostShown : Infinity);
        total = Math.min(total + shown.length, entries.length);
        tellCount();
        if (follows) {
            scrollToEnd();
        }
    }

    function setUpKinds() {
        replaceChildren(byId("kinds", HTMLElement), KINDS.map((kind) => {
            const button = element("button", { type: "button", className: "kind kind-" + kind,
                "aria-pressed": "true" }, kind);
            button.addEventListener("click", () => {
                const isHidden = hidden.delete(kind) ? false : Boolean(hidden.add(kind));
                button.setAttribute("aria-pressed", String(!isHidden));
                showAll();
            });
            return button;
        }));
    }

    setUpKinds();
    setUpAskLine(device);
    setUpFilter(device, (filter) => {
        matches = filter;
        mostShown = PAGE_SIZE;
        showAll();
    });
    earlier.addEventListener("click", () => {
        mostShown += PAGE_SIZE;
        const fromEnd = list.scrollHeight - list.scrollTop;
        showAll();
        list.scrollTop = list.scrollHeight - fromEnd;
    });
    list.addEventListener("scroll", () => {
        follows = list.scrollTop + list.clientHeight >= list.scrollHeight - 20;
    });
    new ResizeObserver(() => follows && scrollToEnd()).observe(list);
    device.entries.listen(add);
    device.reset.listen(() => {
        entries = [];
        rows.forget();
        showAll();
    });
}

/**
 * The page filters by itself. The device is asked what is wrong with a pattern, because it knows
 * all names and suggests the one that was meant.
 *
 * @param {Device} device
 * @param {(filter: (entry: Entry) => boolean) => void} setFilter
 */
function setUpFilter(device, setFilter) {
    const field = byId("pattern", HTMLInputElement);
    const error = byId("pattern-error", HTMLElement);
    /** @type {number | undefined} */
    let timer;

    /** @param {string} text */
    function complain(text) {
        error.hidden = text === "";
        error.textContent = text;
        field.setAttribute("aria-invalid", String(text !== ""));
    }

    async function apply() {
        const text = field.value.trim();
        const filter = readPattern(text);
        setFilter(filter || (() => false));
        complain(filter ? "" : "This is no pattern; one is MEMBER=GLOB, such as what=reply.");
        if (text === "") {
            return;
        }
        try {
            await device.connected().ask(`journal ${text} at<0`);
        } catch (problem) {
            if (text === field.value.trim() && !/connection/.test(messageOf(problem))) {
                complain(messageOf(problem));
            }
        }
    }

    field.addEventListener("input", () => {
        clearTimeout(timer);
        timer = window.setTimeout(apply, PATIENCE);
    });
}

/** @param {Device} device */
function setUpAskLine(device) {
    const field = byId("line", HTMLInputElement);
    const answer = byId("answer", HTMLElement);
    const close = byId("answer-close", HTMLButtonElement);
    /** @type {string[]} */
    const history = [];
    let at = 0;

    /**
     * @param {string} text
     * @param {boolean} isError
     */
    function show(text, isError) {
        answer.hidden = close.hidden = text === "";
        answer.textContent = text;
        answer.classList.toggle("error", isError);
        answer.scrollTop = 0;
    }

    byId("ask", HTMLFormElement).addEventListener("submit", async (event) => {
        event.preventDefault();
        const line = field.value.trim();
        if (line === "") {
            show("", false);
            return;
        }
        history.push(line);
        at = history.length;
        field.value = "";
        try {
            const output = await device.connected().ask(line);
            show(`${line}\n${output.trim() || "done"}`, false);
        } catch (error) {
            show(`${line}\n${messageOf(error)}`, true);
        }
    });
    field.addEventListener("keydown", (event) => {
        const step = event.key === "ArrowUp" ? -1 : Number(event.key === "ArrowDown");
        if (step !== 0) {
            at = Math.max(0, Math.min(history.length, at + step));
            field.value = history[at] || "";
            event.preventDefault();
        } else if (event.key === "Escape") {
            show("", false);
        }
    });
    close.addEventListener("click", () => show("", false));
}
