/** The services of the device: their present answers, and what is wrong with them on purpose. */
import { byId, element, isBeingEdited, switchFor } from "./dom.js";
import { findError, indented, isTree, onOneLine, parsed } from "./json.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").Service} Service */

const DELAY_FORM = /^\d+(\.\d+)?(ms|s|min)?$/;

/** @param {any} delay */
function delayText(delay) {
    return Array.isArray(delay) ? delay.join(" to ") + " ms" : `${delay} ms`;
}

/**
 * A service can answer any text; one that looks like JSON is checked as such.
 *
 * @param {HTMLTextAreaElement} editor
 * @param {HTMLElement} problem
 */
function showErrorIn(editor, problem) {
    const text = editor.value;
    const error = /^\s*[[{]/.test(text) ? findError(text) : null;
    editor.setAttribute("aria-invalid", String(error !== null));
    problem.textContent = error ? `line ${error.line}, column ${error.column}: ${error.message}` : "";
    return error;
}

/**
 * @param {Device} device
 * @param {string} uri
 */
function createCard(device, uri) {
    const title = element("span", { className: "mono service-uri" }, uri);
    const facts = element("span", { className: "muted small" });
    const preview = element("span", { className: "mono small service-preview" });
    const editor = element("textarea", { className: "code", spellcheck: false, "aria-label": "Answer of " + uri });
    const problem = element("p", { className: "error small", role: "alert" });
    const answer = element("button", { type: "button", className: "primary" }, "Answer so");
    const reply = element("button", { type: "button", title: "To every open call and subscription, now" }, "Send a reply");
    const allow = element("button", { type: "button" }, "As in the profile");
    const silent = switchFor("Silent", false, (isOn) => device.act(`${isOn ? "silence" : "allow"} ${uri}`));
    const refused = switchFor("Refused", false, (isOn) => device.act(`${isOn ? "refuse" : "allow"} ${uri}`));
    const delay = element("input", { className: "short", placeholder: "250ms", "aria-label": "Delay" });
    let isChanged = false;

    /** @param {string} command */
    async function send(command) {
        const error = showErrorIn(editor, problem);
        if (error) {
            editor.focus();
            editor.setSelectionRange(error.at, error.at + 1);
        } else if (await device.act(`${command} ${uri} ${onOneLine(editor.value)}`)) {
            isChanged = false;
        }
    }

    editor.addEventListener("input", () => {
        isChanged = true;
        showErrorIn(editor, problem);
    });
    editor.addEventListener("keydown", (event) => {
        if (event.key === "Enter" && (event.ctrlKey || event.metaKey)) {
            send("answer");
        }
    });
    answer.addEventListener("click", () => send("answer"));
    reply.addEventListener("click", () => send("reply"));
    allow.addEventListener("click", () => {
        isChanged = false;
        device.act("allow " + uri);
    });
    delay.addEventListener("change", () => {
        const time = delay.value.trim().replace(/^(\d+(\.\d+)?)$/, "$1ms");
        delay.setAttribute("aria-invalid", String(!DELAY_FORM.test(time)));
        if (DELAY_FORM.test(time)) {
            device.act(`delay ${uri} ${time}`);
        }
    });

    const details = element("details", { className: "card service" },
        element("summary", {}, title, preview, facts),
        editor, problem,
        element("div", { className: "row" }, answer, reply, allow,
            element("span", { className: "gap" }), silent, refused,
            element("label", { className: "inline" }, "Delay", delay)));

    return {
        item: element("li", {}, details),
        /**
         * @param {Service} service
         * @param {boolean} isRefused
         */
        show: (service, isRefused) => {
            const text = service.answer === null ? "" : service.answer;
            const states = [isRefused && "refused", service.silent && "silent",
                service.changed && "changed", delayText(service.delay)];
            facts.textContent = states.filter(Boolean).join(" · ");
            preview.textContent = text || "no answer";
            details.classList.toggle("changed", service.changed || service.silent || isRefused);
            silent.querySelector("input").checked = service.silent;
            refused.querySelector("input").checked = isRefused;
            if (!isBeingEdited(delay)) {
                delay.value = Array.isArray(service.delay) ? "" : service.delay + "ms";
            }
            if (!isBeingEdited(editor) && !isChanged) {
                editor.value = isTree(parsed(text)) ? indented(text) : text;
                editor.rows = Math.min(14, Math.max(3, editor.value.split("\n").length));
                showErrorIn(editor, problem);
            }
        },
    };
}

/** @param {Device} device */
export function setUpServices(device) {
    const list = byId("services", HTMLElement);
    /** @type {Map<string, ReturnType<typeof createCard>>} */
    const cards = new Map();

    device.onState(["services", "refused"], ({ services = [], refused = [] }) => {
        const uris = services.map((service) => service.uri);
        cards.forEach((card, uri) => {
            if (!uris.includes(uri)) {
                card.item.remove();
                cards.delete(uri);
            }
        });
        for (const service of services) {
            const card = cards.get(service.uri) || createCard(device, service.uri);
            if (!cards.has(service.uri)) {
                cards.set(service.uri, card);
                list.append(card.item);
            }
            card.show(service, refused.includes(service.uri));
        }
    });
    device.reset.listen(() => {
        cards.clear();
        list.textContent = "";
    });
}
