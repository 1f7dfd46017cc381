/** The device's screen: its picture, touches on it, and the keyboard while it has the focus. */
import { byId, contextOf, save, setIcon } from "./dom.js";
import { createSender } from "./device.js";
import { draw } from "./frames.js";
import { setUpKeys, setUpTouches, within } from "./input.js";
import { commandsTyping } from "./keyboard.js";

/** @typedef {import("./device.js").Device} Device */

/** The side that points down, as the angle by which the device is turned. */
const ANGLES = /** @type {Object<string, number>} */ (
    { bottom: 0, right: 90, top: 180, left: 270 });
const BEZEL = 14;

const canvas = () => byId("screen", HTMLCanvasElement);

function createView() {
    const frame = byId("frame", HTMLElement);
    const place = byId("place", HTMLElement);
    let angle = 0;
    let fits = true;

    function scale() {
        const isSideways = angle % 180 !== 0;
        const width = (isSideways ? canvas().height : canvas().width) + 2 * BEZEL;
        const height = (isSideways ? canvas().width : canvas().height) + 2 * BEZEL;
        return fits ? Math.min(place.clientWidth / width, place.clientHeight / height, 2) : 1;
    }

    function layOut() {
        frame.style.width = canvas().width + "px";
        frame.style.height = canvas().height + "px";
        frame.style.transform = `translate(-50%, -50%) rotate(${angle}deg) scale(${scale()})`;
        place.classList.toggle("scrolls", !fits);
    }

    return {
        layOut,
        /** @param {string} orientation */
        turn: (orientation) => {
            angle = ANGLES[orientation] || 0;
            layOut();
        },
        toggleFit: () => {
            fits = !fits;
            layOut();
            return fits;
        },
        /**
         * The point of the application's surface.
         *
         * @param {PointerEvent} event
         */
        pointAt: (event) => {
            const box = canvas().getBoundingClientRect();
            const right = event.clientX - (box.left + box.width / 2);
            const down = event.clientY - (box.top + box.height / 2);
            const turn = angle * Math.PI / 180;
            const x = (right * Math.cos(turn) + down * Math.sin(turn)) / scale();
            const y = (down * Math.cos(turn) - right * Math.sin(turn)) / scale();
            return [within(x + canvas().width / 2, canvas().width),
                within(y + canvas().height / 2, canvas().height)];
        },
    };
}

/** @param {(line: string) => void} send */
function setUpPaste(send) {
    document.addEventListener("paste", (event) => {
        if (document.activeElement === canvas() && event.clipboardData) {
            commandsTyping(event.clipboardData.getData("text")).forEach((line) => send(line));
        }
    });
}

/** @param {Device} device */
function setUpTools(device) {
    const window = byId("window", HTMLButtonElement);
    let isMinimized = false;
    byId("screenshot", HTMLButtonElement).addEventListener("click", () => {
        canvas().toBlob((picture) => picture && save("screenshot.png", picture), "image/png");
    });
    byId("quit", HTMLButtonElement).addEventListener("click", () => device.act("quit"));
    window.addEventListener("click",
        () => device.act(isMinimized ? "window restore" : "window minimize"));
    device.onState(["state"], ({ state }) => {
        isMinimized = state.window === "minimized";
        setIcon(window, isMinimized ? "restore" : "minimize",
            isMinimized ? "Restore the window" : "Minimize the window");
    });
}

/**
 * Shows pictures only while somebody can see them.
 *
 * @param {Device} device
 */
export function setUpScreen(device) {
    const view = createView();
    const send = createSender(device);
    const over = byId("over", HTMLElement);
    const notice = byId("notice", HTMLElement);
    const zoom = byId("zoom", HTMLButtonElement);
    setUpTouches(canvas(), (what, event) =>
        send(`touch ${what} ${view.pointAt(event).join(" ")}`, what === "move"));
    setUpKeys(canvas(), (isPressed, name) => send(`key ${isPressed ? "down" : "up"} ${name}`),
        (text) => send("text " + text));
    setUpPaste(send);
    setUpTools(device);

    /** @param {string} text */
    function cover(text) {
        over.hidden = text === "";
        notice.textContent = text;
    }

    function sayWhether() {
        device.connected().frames(!document.hidden);
    }

    new ResizeObserver(view.layOut).observe(byId("place", HTMLElement));
    document.addEventListener("visibilitychange", sayWhether);
    zoom.addEventListener("click",
        () => zoom.setAttribute("aria-pressed", String(view.toggleFit())));
    device.onState(["state"], ({ state }) => {
        view.turn(state.orientation);
        cover(state.window === "minimized" ? "The window is minimized." : "");
    });
    device.onState(["screen"], ({ screen }) => {
        if (screen && (canvas().width !== screen.width || canvas().height !== screen.height)) {
            canvas().width = screen.width;
            canvas().height = screen.height;
            view.layOut();
        }
    });
    device.reset.listen(() => {
        view.turn("bottom");
        contextOf(canvas()).clearRect(0, 0, canvas().width, canvas().height);
        cover("");
        byId("screen-size", HTMLElement).textContent = "no picture yet";
    });

    return {
        cover,
        start: sayWhether,
        /** @param {ArrayBuffer} picture */
        show: async (picture) => {
            try {
                if (await draw(canvas(), picture)) {
                    view.layOut();
                }
                byId("screen-size", HTMLElement).textContent =
                    `${canvas().width} × ${canvas().height}`;
            } finally {
                requestAnimationFrame(() => device.connected().shown());
            }
        },
    };
}
