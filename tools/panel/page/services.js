/** The services of the device: their present answers, and what is wrong with them on purpose. */
import { byId, element, isBeingEdited, switchFor } from "./dom.js";
import { findError, indented, isTree, onOneLine, parsed } from "./json.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").Service} Service */

const DELAY_FORM = /^\d+(\.\d+)?(ms|s|min)?$/;

/** @param {Service} service */
function hasAnswer(service) {
    return service.answer !== null;
}

/** @param {number | number[]} delay */
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
    problem.textContent = error
        ? `line ${error.line}, column ${error.column}: ${error.message}` : "";
    return error;
}

/**
 * The editor of a service's answer, and the buttons that send what is in it.
 *
 * @param {Device} device
 * @param {string} uri
 */
function createEditor(device, uri) {
    const editor = element("textarea",
        { className: "code", spellcheck: false, "aria-label": "Answer of " + uri });
    const problem = element("p", { className: "error small", role: "alert" });
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

    /**
     * @param {string} label
     * @param {string} title
     * @param {() => void} onClick
     */
    function button(label, title, onClick) {
        const made = element("button", { type: "button", title }, label);
        made.addEventListener("click", onClick);
        return made;
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
    const answer = button("Answer so", "From now on; Ctrl and Enter does the same",
        () => send("answer"));
    answer.classList.add("primary");
    const buttons = [answer,
        button("Send a reply", "To every open call and subscription, now", () => send("reply")),
        button("As in the profile", "Undo all changes", () => {
            isChanged = false;
            device.act("allow " + uri);
        })];

    return {
        parts: [editor, problem],
        buttons,
        /** @param {string} text */
        show: (text) => {
            if (!isBeingEdited(editor) && !isChanged) {
                editor.value = isTree(parsed(text)) ? indented(text) : text;
                editor.rows = Math.min(14, Math.max(3, editor.value.split("\n").length));
                showErrorIn(editor, problem);
            }
        },
    };
}

/**
 * @param {Device} device
 * @param {string} uri
 */
function createDelay(device, uri) {
    const input = element("input",
        { className: "short", placeholder: "250ms", "aria-label": "Delay of " + uri });
    input.addEventListener("change", () => {
        const time = input.value.trim().replace(/^\d+$/, "$&ms");
        const isTime = DELAY_FORM.test(time);
        input.setAttribute("aria-invalid", String(!isTime));
        if (isTime) {
            device.act(`delay ${uri} ${time}`);
        }
    });
    return input;
}

/**
 * @param {Device} device
 * @param {string} uri
 */
function createCard(device, uri) {
    const facts = element("span", { className: "muted small" });
    const preview = element("span", { className: "mono small one-line service-preview" });
    const editor = createEditor(device, uri);
    const delay = createDelay(device, uri);
    const silent = switchFor("Silent", false,
        (isOn) => device.act(`${isOn ? "silence" : "allow"} ${uri}`));
    const refused = switchFor("Refused", false,
        (isOn) => device.act(`${isOn ? "refuse" : "allow"} ${uri}`));
    const details = element("details", { className: "card service" },
        element("summary", {}, element("span", { className: "mono service-uri" }, uri), preview,
            facts),
        ...editor.parts,
        element("div", { className: "row" }, ...editor.buttons,
            element("span", { className: "gap" }), silent.label, refused.label,
            element("label", { className: "inline" }, "Delay", delay)));

    return {
        item: element("li", {}, details),
        /**
         * @param {Service} service
         * @param {boolean} isRefused
         */
        show: (service, isRefused) => {
            const text = service.answer || "";
            const words = [isRefused && "refused", service.silent && "silent",
                service.changed && "changed", delayText(service.delay)];
            facts.textContent = words.filter(Boolean).join(" · ");
            preview.textContent = text || (service.silent ? "no answer" : "no fixed answer");
            details.classList.toggle("changed", service.changed || service.silent || isRefused);
            silent.input.checked = service.silent;
            refused.input.checked = isRefused;
            if (!isBeingEdited(delay)) {
                delay.value = Array.isArray(service.delay) ? "" : service.delay + "ms";
            }
            editor.show(text);
        },
    };
}

/** @param {Device} device */
export function setUpServices(device) {
    const list = byId("services", HTMLElement);
    /** @type {Map<string, ReturnType<typeof createCard>>} */
    const cards = new Map();

    device.onState(["services", "refused"], ({ services, refused }) => {
        const uris = services.map((service) => service.uri);
        cards.forEach((card, uri) => {
            if (!uris.includes(uri)) {
                card.item.remove();
                cards.delete(uri);
            }
        });
        const computed = services.filter((service) => !hasAnswer(service));
        const sorted = [...services.filter(hasAnswer), ...computed];
        for (const service of sorted) {
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
