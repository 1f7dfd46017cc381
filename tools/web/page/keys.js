/** The browser's keys, with SDL's names. */

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
