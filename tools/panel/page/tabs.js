/** The areas of the page as tabs, with the keys that tabs have everywhere. */
import { byId } from "./dom.js";

const WIDE = "(min-width: 860px)";

/** On a wide page the journal is always shown, and is no tab. */
export function setUpTabs() {
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
