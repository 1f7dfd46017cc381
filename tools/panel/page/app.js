/** Puts the page together: connects it to the server, and shows the device that was chosen. */
import { byId, element, replaceChildren } from "./dom.js";
import { createDevice } from "./device.js";
import { setUpDial } from "./dial.js";
import { setUpJournal } from "./journal.js";
import { setUpKeyboard } from "./keyboard.js";
import { setUpLook } from "./look.js";
import { setUpPage } from "./page.js";
import { setUpRecord } from "./record.js";
import { setUpScreen } from "./screen.js";
import { setUpServices } from "./services.js";
import { connect } from "./socket.js";
import { setUpTime } from "./time.js";
import { setUpWorld } from "./world.js";

/** @typedef {import("./socket.js").RunningDevice} RunningDevice */

const WIDE = "(min-width: 860px)";
const MESSAGE_TIME = 8000;
const MOST_MESSAGES = 4;
const NO_DEVICE = "No device runs. Start one with tavsim run, and it appears here.";

/** On a wide page the journal is always shown, and is no tab. */
function setUpTabs() {
    const list = byId("tabs", HTMLElement);
    const tabs = Array.from(list.querySelectorAll("button"));
    const wide = window.matchMedia(WIDE);

    /** @param {HTMLButtonElement} chosen */
    function select(chosen) {
        for (const tab of tabs) {
            const isChosen = tab === chosen;
            tab.setAttribute("aria-selected", String(isChosen));
            tab.tabIndex = isChosen ? 0 : -1;
            byId(tab.getAttribute("aria-controls") || "", HTMLElement).hidden = !isChosen;
        }
        window.dispatchEvent(new Event("resize"));
    }

    /** @param {KeyboardEvent} event */
    function moveBy(event) {
        const steps = { ArrowRight: 1, ArrowLeft: -1 };
        const step = steps[/** @type {keyof typeof steps} */ (event.key)];
        const shown = tabs.filter((tab) => tab.offsetParent !== null);
        const at = shown.findIndex((tab) => tab === document.activeElement);
        if (step && at >= 0) {
            const next = shown[(at + step + shown.length) % shown.length];
            next.focus();
            select(next);
            event.preventDefault();
        }
    }

    list.addEventListener("keydown", moveBy);
    tabs.forEach((tab) => tab.addEventListener("click", () => select(tab)));
    wide.addEventListener("change", () => {
        const journal = byId("tab-journal", HTMLButtonElement);
        if (wide.matches && journal.getAttribute("aria-selected") === "true") {
            select(tabs[0]);
        }
    });
    select(tabs[0]);
}

/** @param {string} text */
function showError(text) {
    const close = element("button", { type: "button", "aria-label": "Close" }, "×");
    const message = element("div", { className: "message" }, element("span", {}, text), close);
    close.addEventListener("click", () => message.remove());
    setTimeout(() => message.remove(), MESSAGE_TIME);
    const messages = byId("messages", HTMLElement);
    messages.append(message);
    Array.from(messages.children).slice(0, -MOST_MESSAGES).forEach((old) => old.remove());
}

/**
 * @param {string} text
 * @param {"live" | "paused" | "ended" | ""} kind
 */
function showStatus(text, kind) {
    const status = byId("status", HTMLElement);
    status.className = "chip " + kind;
    if (status.textContent !== text) {
        status.textContent = text;
    }
}

/** @param {string} program */
function shortProgram(program) {
    const [file, ...options] = program.split(" ");
    return [file.slice(file.lastIndexOf("/") + 1), ...options].join(" ");
}

/** @param {RunningDevice} running */
function titleOf(running) {
    return `${shortProgram(running.program)} on ${running.device}`;
}

const device = createDevice(showError);
const screen = setUpScreen(device);
const record = setUpRecord(device);
const chooser = byId("devices", HTMLSelectElement);
/** @type {RunningDevice[]} */
let running = [];
let shown = "";
let hasEnded = false;

setUpTabs();
setUpWorld(device);
setUpDial(device);
setUpLook(device);
setUpServices(device);
setUpTime(device);
setUpPage(device);
setUpKeyboard(device);
setUpJournal(device, record.expectThis);

/** @param {string} root */
function open(root) {
    shown = root;
    hasEnded = false;
    device.connected().open(root);
}

/** @param {string} how */
function end(how) {
    hasEnded = true;
    showStatus("ended", "ended");
    screen.cover(how);
    document.body.classList.add("has-ended");
}

function listDevices() {
    const isListed = running.some(({ root }) => root === shown);
    const options = running.map((one) => element("option", { value: one.root }, titleOf(one)));
    if (shown !== "" && !isListed) {
        options.unshift(element("option", { value: shown }, chooser.dataset.title || shown));
    }
    replaceChildren(chooser, options);
    chooser.value = shown;
    chooser.hidden = options.length < 2;
    byId("device-name", HTMLElement).hidden = !chooser.hidden;
}

/** @param {RunningDevice[]} devices */
function takeDevices(devices) {
    running = devices;
    if (shown === "" && devices.length > 0) {
        open(devices[0].root);
    } else if (shown === "") {
        showStatus("no device", "");
        screen.cover(NO_DEVICE);
    }
    listDevices();
}

device.onState(["device", "program"], ({ device: name, program }) => {
    const title = `${shortProgram(program)} on ${name}`;
    byId("device-name", HTMLElement).textContent = title;
    byId("device-name", HTMLElement).title = program;
    chooser.dataset.title = title;
    document.title = title;
});
device.onState(["time"], ({ time }) => {
    if (!hasEnded) {
        showStatus(time.paused ? "paused" : "running", time.paused ? "paused" : "live");
    }
});
chooser.addEventListener("change", () => open(chooser.value));

device.connectTo(connect({
    settings: device.settings.tell,
    devices: takeDevices,
    opened: (root) => {
        document.body.classList.remove("has-ended");
        device.forget(root);
        screen.start();
    },
    refused: showError,
    watch: device.take,
    lost: (count) => showError(`${count} lines of the journal were lost on the way.`),
    ended: end,
    picture: screen.show,
    closed: () => {
        if (!hasEnded) {
            end("The connection to the panel is closed.");
            showStatus("disconnected", "ended");
        }
    },
}));
