/** The compass: a dial to turn by hand, or to follow the course. */
import { byId, svg } from "./dom.js";
import { createSender } from "./device.js";

/** @typedef {import("./device.js").Device} Device */

const PAUSE = 60;

/** @param {SVGElement} dial */
function drawDial(dial) {
    dial.append(svg("circle", { r: 104, class: "dial-ring" }));
    for (let angle = 0; angle < 360; angle += 10) {
        const length = angle % 90 === 0 ? 14 : angle % 30 === 0 ? 10 : 5;
        dial.append(svg("line", { x1: 0, x2: 0, y1: -98, y2: length - 98,
            class: angle % 30 === 0 ? "dial-tick strong" : "dial-tick",
            transform: `rotate(${angle})` }));
    }
    ["N", "E", "S", "W"].forEach((name, n) => {
        const [x, y] = [[0, -68], [70, 0], [0, 70], [-70, 0]][n];
        const className = n === 0 ? "dial-name north" : "dial-name";
        dial.append(svg("text", { x, y: y + 5, class: className }, name));
    });
    const needle = svg("g", {},
        svg("path", { d: "M0-92L11 0H-11Z", class: "needle-north" }),
        svg("path", { d: "M0 60L8 0H-8Z", class: "needle-south" }),
        svg("circle", { r: 9, class: "needle-hub" }));
    dial.append(needle);
    return needle;
}

/** @param {import("./device.js").State["compass"]} compass */
function sourceOf({ on, follows, held }) {
    if (held) {
        return "held by you";
    }
    if (follows) {
        return "follows the course";
    }
    return on ? "as the profile turns it" : "not switched on";
}

/** @param {Device} device */
export function setUpDial(device) {
    const dial = byId("dial", SVGElement);
    const release = byId("compass-release", HTMLButtonElement);
    const follow = byId("compass-follow", HTMLInputElement);
    const needle = drawDial(dial);
    const send = createSender(device, PAUSE);
    let heading = 0;
    /** @type {number | null} the direction that was last asked for */
    let held = null;
    let isAwaited = false; // the device does not tell that direction yet
    let wasHeld = false;
    let isTurning = false;

    /** @param {number | null} degrees */
    function show(degrees) {
        heading = degrees === null ? 0 : (degrees % 360 + 360) % 360;
        const text = degrees === null ? "–" : heading.toFixed(1) + "°";
        needle.setAttribute("transform", `rotate(${heading})`);
        dial.setAttribute("aria-valuenow", String(Math.round(heading) % 360));
        dial.setAttribute("aria-valuetext", text);
        byId("heading", HTMLElement).textContent = text;
    }

    /** @param {number} degrees */
    function hold(degrees) {
        show(Math.round(degrees));
        if (heading !== held) {
            held = heading;
            isAwaited = true;
            send(`compass hold ${heading}`, true);
        }
    }

    /** @param {PointerEvent} event */
    function turnTo(event) {
        const box = dial.getBoundingClientRect();
        const right = event.clientX - (box.left + box.width / 2);
        const up = box.top + box.height / 2 - event.clientY;
        if (Math.hypot(right, up) > 4) {
            hold(Math.atan2(right, up) * 180 / Math.PI);
        }
    }

    dial.addEventListener("pointerdown", (event) => {
        dial.setPointerCapture(event.pointerId);
        isTurning = true;
        turnTo(event);
    });
    dial.addEventListener("pointermove", (event) => isTurning && turnTo(event));
    ["pointerup", "pointercancel"].forEach((name) => dial.addEventListener(name, () => {
        isTurning = false;
    }));
    dial.addEventListener("keydown", (event) => {
        const steps = /** @type {Object<string, number>} */ (
            { ArrowRight: 1, ArrowUp: 1, ArrowLeft: -1, ArrowDown: -1, PageUp: 10, PageDown: -10 });
        if (steps[event.key]) {
            hold(heading + steps[event.key]);
            event.preventDefault();
        }
    });
    release.addEventListener("click", () => device.act("compass hold off"));
    follow.addEventListener("change",
        () => device.act(`compass follow ${follow.checked ? "on" : "off"}`));
    device.onState(["compass"], ({ compass }) => {
        const isLetGo = wasHeld && !compass.held;
        wasHeld = compass.held;
        isAwaited = isAwaited && !isLetGo && compass.heading !== held;
        if (!isTurning && !isAwaited) {
            show(compass.heading);
        }
        release.hidden = !compass.held;
        held = compass.held || isTurning || isAwaited ? held : null;
        follow.checked = compass.follows;
        byId("compass-source", HTMLElement).textContent = sourceOf(compass);
    });
    device.reset.listen(() => {
        isAwaited = wasHeld = false;
        show(null);
    });
}
