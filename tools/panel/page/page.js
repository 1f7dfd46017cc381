/** The page of a plug-in: its methods, its calls, its console. */
import { byId, element, replaceChildren } from "./dom.js";
import { messageOf } from "./device.js";
import { timeText } from "./rows.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").Entry} Entry */

const MOST_SHOWN = 200;

/**
 * @param {HTMLElement} list
 * @param {HTMLElement[]} rows
 */
function append(list, rows) {
    list.append(...rows);
    Array.from(list.children).slice(0, -MOST_SHOWN).forEach((row) => row.remove());
    list.scrollTop = list.scrollHeight;
}

/**
 * A form to call one method.
 *
 * @param {Device} device
 * @param {string} name
 */
function methodForm(device, name) {
    const field = element("input", { className: "mono grow", spellcheck: false,
        placeholder: "3 \"two words\"", "aria-label": "Arguments of " + name });
    const reply = element("output", { className: "mono small" });
    const form = element("form", {}, element("code", {}, name), field,
        element("button", { type: "submit" }, "Call"), reply);
    form.addEventListener("submit", async (event) => {
        event.preventDefault();
        reply.classList.remove("error");
        try {
            const output = await device.connected().ask(`page call ${name} ${field.value}`.trim());
            reply.textContent = "→ " + output.trim();
        } catch (error) {
            reply.textContent = messageOf(error);
            reply.classList.add("error");
        }
    });
    return element("li", {}, form);
}

/** @param {Entry} entry */
function callRow(entry) {
    const outcome = String(entry.outcome === undefined ? "" : entry.outcome);
    const values = Array.isArray(entry.arguments) ? JSON.stringify(entry.arguments).slice(1, -1)
        : String(entry.arguments || "").replace(/^\[(.*)\]$/, "$1");
    return element("li", {}, element("span", { className: "muted mono small" }, timeText(entry.at)),
        element("code", {}, `${entry.method}(${values})`),
        element("span", { className: /^exception/.test(outcome) ? "mono error" : "mono" }, outcome));
}

/** @param {Entry} entry */
function consoleRow(entry) {
    return element("li", { className: "level-" + entry.level },
        element("span", { className: "muted mono small" }, timeText(entry.at)),
        element("span", { className: "mono" }, String(entry.text)));
}

/** @param {Device} device */
export function setUpPage(device) {
    const tab = byId("tab-page", HTMLButtonElement);
    const methods = byId("methods", HTMLElement);
    const calls = byId("calls", HTMLElement);
    const console = byId("console", HTMLElement);

    device.onState(["page"], ({ page }) => {
        tab.hidden = !page;
        if (page) {
            replaceChildren(methods, page.methods.map((name) => methodForm(device, name)));
        }
    });
    device.entries.listen((entries) => {
        const ofPage = entries.filter((entry) => entry.kind === "page");
        append(calls, ofPage.filter(({ what }) => what === "call").map(callRow));
        append(console, ofPage.filter(({ what }) => what === "console").map(consoleRow));
    });
    device.reset.listen(() => {
        tab.hidden = true;
        [methods, calls, console].forEach((list) => replaceChildren(list, []));
    });
}
