/** The recording as a scenario: to read while it grows, to edit, to save and to play again. */
import { byId, element, replaceChildren, save } from "./dom.js";
import { messageOf } from "./device.js";
import { patternFor } from "./pattern.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").Entry} Entry */
/** @typedef {import("./device.js").Step} Step */

const FAILURE = /^(\S+?):(\d+): (.*)$/;
const SIGNS = /** @type {Object<string, string>} */ ({ done: "✓", failed: "✕", waiting: "…" });

/** @param {string} line */
function timeOf(line) {
    const found = /^at (\d+)ms:/.exec(line);
    return found ? Number(found[1]) : null;
}

/**
 * Where the line about something of that time belongs: behind the last step that came before it.
 *
 * @param {string[]} lines
 * @param {number} time
 */
function lineFor(lines, time) {
    let [at, before] = [0, 0];
    lines.forEach((line, number) => {
        const its = timeOf(line);
        const isHeader = /^(device|program|page|limit|#)/.test(line);
        const isExpectation = at === number && /^expect within/.test(line);
        if (isHeader || isExpectation || (its !== null && its <= time)) {
            at = number + 1;
            before = its === null ? before : its;
        }
    });
    return { at, before };
}

/** @param {Device} device */
function setUpSteps(device) {
    const list = byId("steps", HTMLElement);
    const card = byId("steps-card", HTMLElement);
    /** @type {Map<number, HTMLElement>} */
    const rows = new Map();
    device.step.listen((step) => {
        const row = element("li", { className: "step-" + step.state, "data-line": step.line },
            element("span", { className: "step-sign", role: "img", "aria-label": step.state },
                SIGNS[step.state] || ""),
            element("span", { className: "muted mono small" }, String(step.line)),
            element("code", {}, step.text),
            element("span", { className: "error small" }, step.reason || ""));
        const before = rows.get(step.line);
        if (before && before.isConnected) {
            before.replaceWith(row);
        } else {
            list.append(row);
        }
        rows.set(step.line, row);
        card.hidden = false;
        row.scrollIntoView({ block: "nearest" });
    });
    device.reset.listen(() => {
        rows.clear();
        list.textContent = "";
        card.hidden = true;
    });
}

/** @param {Device} device */
export function setUpRecord(device) {
    const editor = byId("recording", HTMLTextAreaElement);
    const play = byId("record-play", HTMLButtonElement);
    const played = byId("played", HTMLElement);
    let header = "";
    /** @type {string[]} */
    let recorded = [];

    /** @param {string[]} lines */
    function append(lines) {
        const isAtEnd = editor.scrollTop + editor.clientHeight >= editor.scrollHeight - 20;
        const { selectionStart, selectionEnd } = editor;
        const text = editor.value.replace(/\n?$/, editor.value === "" ? "" : "\n");
        editor.value = text + lines.join("\n") + "\n";
        editor.setSelectionRange(selectionStart, selectionEnd);
        if (isAtEnd) {
            editor.scrollTop = editor.scrollHeight;
        }
    }

    function fromStart() {
        editor.value = header;
        append(recorded);
    }

    /** @param {number} number */
    function selectLine(number) {
        const lines = editor.value.split("\n");
        const start = lines.slice(0, number - 1).reduce((sum, line) => sum + line.length + 1, 0);
        editor.focus();
        editor.setSelectionRange(start, start + (lines[number - 1] || "").length);
        editor.scrollTop = (number - 4) * parseFloat(getComputedStyle(editor).lineHeight);
    }

    /**
     * A line of what the run printed; one that names a line of the scenario leads there.
     *
     * @param {string} line
     */
    function outputLine(line) {
        const [, , number, text] = FAILURE.exec(line) || [];
        if (number === undefined) {
            return element("div", { className: "mono small" }, line);
        }
        const link = element("button", { type: "button", className: "failure" },
            `Line ${number}: ${text}`);
        link.addEventListener("click", () => selectLine(Number(number)));
        return link;
    }

    async function playAgain() {
        play.disabled = true;
        played.hidden = false;
        played.className = "played";
        replaceChildren(played, ["It is being played in virtual time…"]);
        try {
            const { status, output = "" } = await device.connected().play(editor.value);
            const lines = output.trim().split("\n").filter((line) => line !== "");
            played.classList.add(status === 0 ? "good" : "bad");
            replaceChildren(played, [element("strong", {}, status === 0
                ? "It has passed: every step was carried out, and every expectation met."
                : `It has failed, with status ${status}.`), ...lines.map(outputLine)]);
        } catch (error) {
            played.classList.add("bad");
            replaceChildren(played, [messageOf(error)]);
        }
        play.disabled = false;
    }

    setUpSteps(device);
    device.settings.listen((settings) => {
        header = settings.header && settings.header + "\n";
        play.hidden = !settings.canPlay;
    });
    device.recorded.listen((lines) => {
        const portable = lines.map((line) => line.replace(`track ${device.root()}/`, "track "));
        recorded = recorded.concat(portable);
        append(portable);
    });
    device.reset.listen(() => {
        recorded = [];
        editor.value = header;
        played.hidden = true;
    });
    play.addEventListener("click", playAgain);
    byId("record-reset", HTMLButtonElement).addEventListener("click", fromStart);
    byId("record-save", HTMLButtonElement).addEventListener("click",
        () => save("session.scenario", new Blob([editor.value], { type: "text/plain" })));

    return {
        /**
         * Writes the line that expects such an entry, at its place in the scenario.
         *
         * @param {Entry} entry
         */
        expectThis: (entry) => {
            const lines = editor.value.replace(/\n$/, "").split("\n");
            const { at, before } = lineFor(lines, entry.at);
            const seconds = Math.ceil((entry.at - before) / 1000) + 1;
            lines.splice(at, 0, `expect within ${seconds}s ${patternFor(entry)}`);
            editor.value = lines.join("\n") + "\n";
            byId("tab-record", HTMLButtonElement).click();
            selectLine(at + 1);
        },
    };
}
