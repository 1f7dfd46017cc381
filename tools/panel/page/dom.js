/** Builds parts of the page. Data only ever becomes text, never markup. */

const SVG = "http://www.w3.org/2000/svg";

/**
 * The element of index.html with this id.
 *
 * @template {Element} T
 * @param {string} id
 * @param {new () => T} type
 * @returns {T}
 */
export function byId(id, type) {
    const found = document.getElementById(id);
    if (!(found instanceof type)) {
        throw new Error(`no ${type.name} with the id ${id}`);
    }
    return found;
}

/** @param {HTMLCanvasElement} canvas */
export function contextOf(canvas) {
    return /** @type {CanvasRenderingContext2D} */ (canvas.getContext("2d"));
}

/**
 * A new element. Names with a dash, and role, are attributes; the others are properties.
 *
 * @template {keyof HTMLElementTagNameMap} K
 * @param {K} tag
 * @param {Object<string, any>} [properties]
 * @param {...(Node | string)} children
 * @returns {HTMLElementTagNameMap[K]}
 */
export function element(tag, properties = {}, ...children) {
    const made = document.createElement(tag);
    for (const [name, value] of Object.entries(properties)) {
        if (name.includes("-") || name === "role") {
            made.setAttribute(name, String(value));
        } else {
            Object.assign(made, { [name]: value });
        }
    }
    made.append(...children);
    return made;
}

/**
 * @param {string} tag
 * @param {Object<string, string | number>} [attributes]
 * @param {...(Node | string)} children
 * @returns {SVGElement}
 */
export function svg(tag, attributes = {}, ...children) {
    const made = /** @type {SVGElement} */ (document.createElementNS(SVG, tag));
    for (const [name, value] of Object.entries(attributes)) {
        made.setAttribute(name, String(value));
    }
    made.append(...children);
    return made;
}

/**
 * Shows another of the icons of index.html.
 *
 * @param {Element} button
 * @param {string} name
 * @param {string} label
 */
export function setIcon(button, name, label) {
    const use = button.querySelector("use");
    if (use) {
        use.setAttribute("href", "#i-" + name);
    }
    button.setAttribute("aria-label", label);
    button.setAttribute("title", label);
}

/**
 * @param {Element} parent
 * @param {Iterable<Node | string>} children
 */
export function replaceChildren(parent, children) {
    parent.textContent = "";
    parent.append(...children);
}

/**
 * A switch with its label.
 *
 * @param {string} text
 * @param {boolean} isOn
 * @param {(isOn: boolean) => void} onChange
 */
export function switchFor(text, isOn, onChange) {
    const input = element("input", { type: "checkbox", role: "switch", checked: isOn });
    input.addEventListener("change", () => onChange(input.checked));
    return { input, label: element("label", { className: "switch" }, input,
        element("span", {}, text)) };
}

/**
 * Lets the user save a file.
 *
 * @param {string} name
 * @param {Blob} content
 */
export function save(name, content) {
    const link = element("a", { href: URL.createObjectURL(content), download: name });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 10000);
}

/**
 * Whether the user is typing in there, so that it must not be written over.
 *
 * @param {Node} node
 */
export function isBeingEdited(node) {
    return node.contains(document.activeElement);
}
