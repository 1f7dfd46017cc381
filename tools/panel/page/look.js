/** What the device is, and what the application has made of it. */
import { byId, element, isBeingEdited, replaceChildren, switchFor } from "./dom.js";
import { createSender } from "./device.js";
import { findError } from "./json.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").State} State */

/** What every device has, with its name, and how it is while the application has not touched it. */
const ALWAYS = /** @type {[string, string, string][]} */ ([
    ["vibrator", "Vibration", "off"], ["keyboard", "Keyboard", "hidden"],
    ["orientation", "Orientation", "bottom"], ["banners", "Banners", "as usual"],
    ["gestures", "Gestures", "as usual"], ["pauseUi", "Pause screen", "as usual"],
    ["screenTimeout", "Screen time-out", "as usual"], ["touch", "Touch", "as usual"],
    ["window", "Window", "shown"], ["compass", "Compass", "off"],
    ["movement", "Movement", "none"], ["location", "Location", "known"],
]);
const HOST_REQUESTS = ["keyboard", "minimize", "touch", "compass", "bridge", "orientation",
    "gestures", "banners", "pauseUi", "screenTimeout"];

/** @param {string} name */
function labelOf(name) {
    const known = ALWAYS.find(([one]) => one === name);
    const words = name.replace(/^port (\d+) (\w+)$/, "port $1/$2");
    return known ? known[1] : words.charAt(0).toUpperCase() + words.slice(1);
}

/** @param {State} state */
function tilesOf(state) {
    const made = state.state;
    const known = ALWAYS.map(([name, , usual]) => ({ name, value: made[name] || usual, usual }));
    const others = Object.keys(made).filter((name) => !ALWAYS.some(([one]) => one === name))
        .map((name) => ({ name, value: made[name], usual: "" }));
    const calls = { name: "open calls", value: String(state.openCalls), usual: "0" };
    return [...known, ...others, calls].map(({ name, value, usual }) => element("li",
        { className: value === usual ? "tile" : "tile made", title: name },
        element("span", { className: "muted small one-line" }, labelOf(name)),
        element("span", { className: "tile-value" }, value)));
}

/** @param {Device} device */
function setUpBattery(device) {
    const range = byId("battery", HTMLInputElement);
    const value = byId("battery-value", HTMLElement);
    const send = createSender(device, 100);
    let isDragged = false;
    range.addEventListener("input", () => {
        isDragged = true;
        value.textContent = range.value + " %";
        send("battery " + range.value, true);
    });
    range.addEventListener("change", () => {
        isDragged = false;
    });
    device.onState(["battery"], ({ battery }) => {
        range.disabled = typeof battery !== "number";
        if (!isDragged) {
            range.value = String(battery);
            value.textContent = typeof battery === "number" ? battery + " %" : "none";
        }
    });
}

/**
 * A value with its name: Enter sets it, Escape takes it back.
 *
 * @param {string} name
 * @param {string} text
 * @param {(text: string) => string | null} check what is wrong with a new text
 * @param {(text: string) => void} set
 */
function valueField(name, text, check, set) {
    const input = element("input", { value: text, spellcheck: false, className: "mono" });
    const problem = element("span", { className: "error small", role: "alert" });
    const apply = () => {
        const wrong = check(input.value);
        problem.textContent = wrong || "";
        input.setAttribute("aria-invalid", String(wrong !== null));
        if (wrong === null && input.value !== text) {
            set(input.value);
        }
    };
    input.addEventListener("change", apply);
    input.addEventListener("keydown", (event) => {
        if (event.key === "Escape") {
            input.value = text;
            problem.textContent = "";
        }
    });
    return element("label", { className: "field" }, name, input, problem);
}

/** @param {string} text */
function wrongJson(text) {
    const error = findError(text);
    return error && `column ${error.column}: ${error.message}`;
}

/**
 * @param {Device} device
 * @param {"preferences" | "properties" | "appinfo"} member
 * @param {string} command
 */
function setUpValues(device, member, command) {
    const list = byId(member, HTMLElement);
    const isJson = member === "preferences";
    device.onState([member], (state) => {
        if (isBeingEdited(list)) {
            return;
        }
        const values = Object.entries(state[member]);
        const fields = values.map(([name, value]) => valueField(name,
            isJson ? JSON.stringify(value) : String(value), isJson ? wrongJson : () => null,
            (text) => device.act(`${command} ${name} ${text}`)));
        replaceChildren(list, fields.length > 0 ? fields
            : [element("p", { className: "muted small" }, "There are none.")]);
    });
}

/** @param {Device} device */
function setUpRefusals(device) {
    const list = byId("refusals", HTMLElement);
    device.onState(["refused"], ({ refused }) => {
        const focused = Array.from(list.querySelectorAll("input"))
            .findIndex((input) => input === document.activeElement);
        replaceChildren(list, HOST_REQUESTS.map((name) => switchFor(name, refused.includes(name),
            (isOn) => device.act(`${isOn ? "refuse" : "allow"} ${name}`)).label));
        if (focused >= 0) {
            list.querySelectorAll("input")[focused].focus();
        }
    });
}

/** @param {Device} device */
export function setUpLook(device) {
    setUpBattery(device);
    setUpRefusals(device);
    setUpValues(device, "preferences", "set preference");
    setUpValues(device, "properties", "set property");
    setUpValues(device, "appinfo", "set appinfo");
    device.onState(["state", "openCalls"],
        (state) => replaceChildren(byId("look", HTMLElement), tilesOf(state)));
}
