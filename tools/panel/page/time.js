/** The device's time: to pause, to step, to speed up; and what falls due next. */
import { byId, element, replaceChildren, setIcon } from "./dom.js";
import { timeText } from "./rows.js";

const SPEEDS = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1000];
const PACES = /** @type {Object<string, string>} */ ({
    real: "Real time: it cannot be held or sped up.",
    virtual: "Virtual time: waiting takes no time at all. It can be paused and stepped.",
    paced: "Paced time: it moves while the application waits, this many times as fast at most.",
});

/** @param {import("./device.js").Device} device */
function setUpSpeed(device) {
    const chosen = byId("speed", HTMLSelectElement);
    const range = byId("speed-range", HTMLInputElement);
    const number = byId("speed-number", HTMLInputElement);
    const setSpeed = (/** @type {number} */ speed) => device.act(`speed ${speed}`);
    const rounded = () => Number((10 ** range.valueAsNumber).toPrecision(2));

    /** @param {number} speed */
    function optionFor(speed) {
        return element("option", { value: String(speed) }, speed + " ×");
    }

    replaceChildren(chosen, SPEEDS.map(optionFor));
    chosen.addEventListener("change", () => setSpeed(Number(chosen.value)));
    range.addEventListener("input", () => {
        number.value = String(rounded());
    });
    range.addEventListener("change", () => setSpeed(rounded()));
    number.addEventListener("change",
        () => number.reportValidity() && setSpeed(number.valueAsNumber));
    device.onState(["time"], ({ time }) => {
        [chosen, range, number].forEach((control) => {
            control.disabled = time.pace !== "paced";
        });
        if (document.activeElement === range || document.activeElement === number) {
            return;
        }
        if (!SPEEDS.includes(time.speed) && chosen.value !== String(time.speed)) {
            chosen.append(optionFor(time.speed));
        }
        chosen.value = String(time.speed);
        range.value = String(Math.log10(Math.max(1, time.speed)));
        range.setAttribute("aria-valuetext", `${time.speed} times`);
        number.value = String(time.speed);
    });
}

/** @param {import("./device.js").Device} device */
export function setUpTime(device) {
    const pause = byId("pause", HTMLButtonElement);
    const step = byId("step", HTMLButtonElement);
    const stepDelivery = byId("step-delivery", HTMLButtonElement);
    setUpSpeed(device);

    pause.addEventListener("click", () => {
        const { time } = device.state();
        device.act(time.paused ? "resume" : "pause");
    });
    step.addEventListener("click", () => device.act("step"));
    stepDelivery.addEventListener("click", () => device.act("step delivery"));

    device.onState(["time"], ({ time }) => {
        byId("clock", HTMLElement).textContent = timeText(time.now);
        byId("pace", HTMLElement).textContent = PACES[time.pace] || time.pace;
        setIcon(pause, time.paused ? "play" : "pause", time.paused ? "Go on" : "Pause");
        pause.disabled = step.disabled = stepDelivery.disabled = time.pace === "real";
    });
    device.onState(["queue", "time"], ({ queue, time }) => {
        const rows = queue.map(({ at, what }) => element("li", {},
            element("span", { className: "mono" }, timeText(at)), element("span", {}, what),
            element("span", { className: "muted small" }, `in ${Math.max(0, at - time.now)} ms`)));
        replaceChildren(byId("queue", HTMLElement), rows.length > 0 ? rows
            : [element("li", { className: "muted" }, "Nothing is waiting.")]);
    });
}
