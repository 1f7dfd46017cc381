/** `<tav-plugin width height>`: the application's picture in its page, with touches and keys. */
import { draw } from "./frames.js";
import { setUpKeys, setUpTouches, within } from "./input.js";

/**
 * @typedef {Object} Connection
 * @property {(message: object) => void} tell
 * @property {(text: string) => string} clean
 * @property {(show: (picture: ArrayBuffer) => void) => void} onPicture
 */

const connection = /** @type {Connection} */ (
    Reflect.get(window, Symbol.for("tav.connection")));

/**
 * The point of the application's surface, which is as large as fits the canvas' box.
 *
 * @param {HTMLCanvasElement} canvas
 * @param {PointerEvent} event
 */
function pointAt(canvas, event) {
    const box = canvas.getBoundingClientRect();
    const scale = Math.min(box.width / canvas.width, box.height / canvas.height);
    const right = event.clientX - (box.left + box.width / 2);
    const down = event.clientY - (box.top + box.height / 2);
    return { x: within(right / scale + canvas.width / 2, canvas.width),
        y: within(down / scale + canvas.height / 2, canvas.height) };
}

/** @param {HTMLCanvasElement} canvas */
function showPictures(canvas) {
    const sayWhether = () => connection.tell({ frames: !document.hidden });
    connection.onPicture(async (picture) => {
        try {
            await draw(canvas, picture);
        } finally {
            requestAnimationFrame(() => connection.tell({ shown: true }));
        }
    });
    document.addEventListener("visibilitychange", sayWhether);
    sayWhether();
}

class Plugin extends HTMLElement {
    static get observedAttributes() {
        return ["width", "height"];
    }

    constructor() {
        super();
        this.box = document.createElement("style");
        this.canvas = document.createElement("canvas");
        this.attachShadow({ mode: "open" }).append(this.box, this.canvas);
    }

    // The page's own style sheets come before this one.
    attributeChangedCallback() {
        const sizes = Plugin.observedAttributes.map((name) => {
            const size = parseFloat(this.getAttribute(name) || "");
            return size >= 0 ? `${name}: ${size}px; ` : "";
        });
        this.box.textContent = `
            :host { display: inline-block; touch-action: none; ${sizes.join("")}}
            canvas { display: block; width: 100%; height: 100%; object-fit: contain; }`;
    }

    connectedCallback() {
        this.attributeChangedCallback();
        for (const [name, value] of [["tabindex", "0"], ["role", "application"],
            ["aria-label", "Application"]]) {
            if (!this.hasAttribute(name)) {
                this.setAttribute(name, value);
            }
        }
        if (document.querySelector("tav-plugin") !== this || this.isSetUp) {
            return;
        }
        this.isSetUp = true;
        setUpTouches(this, (what, event) =>
            connection.tell({ touch: what, ...pointAt(this.canvas, event) }));
        setUpKeys(this, (isPressed, name) => connection.tell({ key: name, pressed: isPressed }),
            (text) => connection.tell({ type: connection.clean(text) }));
        showPictures(this.canvas);
    }
}

customElements.define("tav-plugin", Plugin);
