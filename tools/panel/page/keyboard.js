/** The device's keyboard on its screen, which comes when the application shows it. */
import { byId, element, replaceChildren } from "./dom.js";
import { createSender } from "./device.js";

/**
 * The commands that type the text: a piece for as much as fits SDL's queue of events, and a key for
 * each new line.
 *
 * @param {string} text
 */
export function commandsTyping(text) {
    const lines = text.replace(/\r\n?/g, "\n").replace(/\t/g, " ").split("\n");
    return lines.flatMap((line, number) => [
        ...(number > 0 ? ["key tap return"] : []),
        ...(line.match(/.{1,40}/gu) || []).map((piece) => "text " + piece),
    ]);
}

const LETTERS = ["qwertyuiop", "asdfghjkl", "zxcvbnm"];
const SYMBOLS = ["1234567890", "-/:;()&@\"", ".,?!'+*"];

/** @param {import("./device.js").Device} device */
export function setUpKeyboard(device) {
    const board = byId("keyboard", HTMLElement);
    const toggle = byId("show-keyboard", HTMLButtonElement);
    const send = createSender(device);
    let hasShift = false;
    let hasSymbols = false;

    /** @param {boolean} isShown */
    function show(isShown) {
        board.hidden = !isShown;
        toggle.setAttribute("aria-pressed", String(isShown));
    }

    /**
     * A key that is down for as long as the finger is on it.
     *
     * @param {string} label
     * @param {string} name
     * @param {string} className
     */
    function key(label, name, className = "") {
        const button = element("button",
            { type: "button", className, "aria-label": name }, label);
        let isDown = false;
        const release = () => {
            if (isDown) {
                send("key up " + name);
            }
            isDown = false;
        };
        button.addEventListener("pointerdown", () => {
            isDown = true;
            send("key down " + name);
        });
        ["pointerup", "pointercancel", "pointerleave"].forEach(
            (event) => button.addEventListener(event, release));
        button.addEventListener("click", (event) => {
            if (event.detail === 0) {
                send("key tap " + name);
            }
        });
        return button;
    }

    /** @param {string} character */
    function typing(character) {
        if (!hasShift && /^[a-z0-9]$/.test(character)) {
            return key(character, character);
        }
        const text = hasShift ? character.toUpperCase() : character;
        const button = element("button", { type: "button" }, text);
        button.addEventListener("click", () => {
            send("text " + text);
            hasShift = false;
            layOut();
        });
        return button;
    }

    /**
     * @param {string} label
     * @param {string} name
     * @param {boolean} isOn
     * @param {() => void} toggleIt
     */
    function mode(label, name, isOn, toggleIt) {
        const button = element("button", { type: "button", className: "wide", "aria-label": name,
            "aria-pressed": isOn }, label);
        button.addEventListener("click", () => {
            toggleIt();
            layOut();
        });
        return button;
    }

    function layOut() {
        const rows = (hasSymbols ? SYMBOLS : LETTERS).map((row) => Array.from(row, typing));
        rows[2].unshift(mode("⇧", "shift", hasShift, () => { hasShift = !hasShift; }));
        rows[2].push(key("⌫", "backspace", "wide"));
        rows.push([
            mode(hasSymbols ? "abc" : "123", "symbols", hasSymbols,
                () => { hasSymbols = !hasSymbols; hasShift = false; }),
            key("⇥", "tab"), key("space", "space", "space"), key("⏎", "return", "wide"),
        ]);
        replaceChildren(board, rows.map((row) => element("div", { className: "keys" }, ...row)));
    }

    layOut();
    toggle.addEventListener("click", () => show(board.hidden));
    let wasShown = false;
    device.onState(["state"], ({ state }) => {
        const isShown = state.keyboard === "shown";
        if (isShown !== wasShown) {
            show(isShown);
        }
        wasShown = isShown;
    });
    device.reset.listen(() => {
        wasShown = false;
        show(false);
    });
}
