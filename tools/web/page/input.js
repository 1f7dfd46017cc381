/** Touches and keys, for an application that is shown in an element of the page. */

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
function meaningOf(event) {
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
 * The application has one finger: further ones are ignored while it is down.
 *
 * @param {HTMLElement} target
 * @param {(what: "down" | "move" | "up", event: PointerEvent) => void} touch
 */
export function setUpTouches(target, touch) {
    /** @type {number | null} */
    let finger = null;

    /** @param {PointerEvent} event */
    function lift(event) {
        if (event.pointerId === finger) {
            finger = null;
            touch("up", event);
        }
    }

    target.addEventListener("pointerdown", (event) => {
        if (finger === null && event.button === 0) {
            finger = event.pointerId;
            target.setPointerCapture(finger);
            target.focus({ preventScroll: true });
            touch("down", event);
        }
        event.preventDefault();
    });
    target.addEventListener("pointermove", (event) => {
        if (event.pointerId === finger) {
            touch("move", event);
        }
    });
    target.addEventListener("pointerup", lift);
    target.addEventListener("pointercancel", lift);
    target.addEventListener("contextmenu", (event) => event.preventDefault());
}

/**
 * Keys while the element has the focus; without it, none is pressed.
 *
 * @param {HTMLElement} target
 * @param {(isPressed: boolean, name: string) => void} press
 * @param {(text: string) => void} type
 */
export function setUpKeys(target, press, type) {
    /** @type {Map<string, string>} what is pressed: the browser's code and the key's name */
    const pressed = new Map();

    target.addEventListener("keydown", (event) => {
        const { key, text } = meaningOf(event);
        if (key || text) {
            event.preventDefault();
        }
        if (key && !event.repeat) {
            pressed.set(event.code, key);
            press(true, key);
        } else if (text) {
            type(text);
        }
    });
    target.addEventListener("keyup", (event) => {
        const key = pressed.get(event.code);
        if (key && pressed.delete(event.code)) {
            press(false, key);
        }
    });
    target.addEventListener("blur", () => {
        pressed.forEach((key) => press(false, key));
        pressed.clear();
    });
}

/**
 * @param {number} value
 * @param {number} size
 */
export function within(value, size) {
    return Math.max(0, Math.min(size - 1, Math.floor(value)));
}
