/** Keyboards: the browser's keys as the device's commands, with SDL's names; and the device's own,
 * on its screen, which comes when the application shows it. */
import { byId, element, replaceChildren } from "./dom.js";
import { createSender } from "./device.js";

/** By the code of the key, for keys that type nothing. */
const NAMES = /** @type {Object<string, string>} */ ({
    Backspace: "backspace", Enter: "return", Pause: "pause", Escape: "escape", Space: "space",
    Delete: "delete", ArrowUp: "up", ArrowDown: "down", ArrowRight: "right", ArrowLeft: "left",
    Insert: "insert", Home: "home", End: "end", PageUp: "page up", PageDown: "page down",
    NumLock: "numlock", CapsLock: "caps lock", ScrollLock: "scroll lock",
    ShiftRight: "right shift", ShiftLeft: "left shift", ControlRight: "right ctrl",
    ControlLeft: "left ctrl", AltRight: "right alt", AltLeft: "left alt",
    MetaRight: "right super", MetaLeft: "left super", ContextMenu: "menu",
    PrintScreen: "print screen",
    Numpad0: "[0]", Numpad1: "[1]", Numpad2: "[2]", Numpad3: "[3]", Numpad4: "[4]",
    Numpad5: "[5]", Numpad6: "[6]", Numpad7: "[7]", Numpad8: "[8]", Numpad9: "[9]",
    NumpadDecimal: "[.]", NumpadDivide: "[/]", NumpadMultiply: "[*]", NumpadSubtract: "[-]",
    NumpadAdd: "[+]", NumpadEnter: "enter", NumpadEqual: "equals",
});

/** The US layout: each key, and what it types with shift. */
const PLAIN = "`1234567890-=[]\\;',./";
const SHIFTED = "~!@#$%^&*()_+{}|:\"<>?";

/**
 * The key that types the character on a US keyboard, with shift or without.
 *
 * @param {string} character
 * @param {boolean} hasShift
 */
function keyTyping(character, hasShift) {
    const key = hasShift ? character.toLowerCase() : character;
    if (/^[a-z]$/.test(key) && (!hasShift || key !== character)) {
        return key;
    }
    const at = (hasShift ? SHIFTED : PLAIN).indexOf(character);
    return at >= 0 ? PLAIN[at] : null;
}

/**
 * What a press of a key is for the device: a key of that name, a text where no key of the device's
 * keyboard types it, or nothing, for what belongs to the browser.
 *
 * @param {KeyboardEvent} event
 * @returns {{key?: string, text?: string}}
 */
export function meaningOf(event) {
    const isFunctionKey = /^F([1-9]|1[0-5])$/.test(event.code);
    if (event.code === "Tab" || event.metaKey || event.isComposing) {
        return {};
    }
    if (isFunctionKey || NAMES[event.code]) {
        return { key: isFunctionKey ? event.code.toLowerCase() : NAMES[event.code] };
    }
    if (event.ctrlKey || Array.from(event.key).length !== 1) {
        return {};
    }
    const key = keyTyping(event.key, event.shiftKey);
    return key ? { key } : { text: event.key };
}

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
