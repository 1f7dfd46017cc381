/** The world around the device: map, routes, tracks, and its position in numbers. */
import { byId, element, isBeingEdited, replaceChildren } from "./dom.js";
import { createSender, messageOf } from "./device.js";
import { lengthOf, metresText, placeText, restOf } from "./geo.js";
import { setUpMapInput } from "./mapinput.js";
import { createMap } from "./map.js";

/** @typedef {import("./device.js").Device} Device */
/** @typedef {import("./device.js").Position} Position */
/** @typedef {import("./geo.js").Place} Place */

const PAUSE = 250;
const MOST_TRAVELLED = 5000;
const HINT = "Drag the device, or click to lay a route.";

const FIELDS = /** @type {[keyof Position, string, number, number][]} */ ([
    ["latitude", "Latitude, °", -90, 90],
    ["longitude", "Longitude, °", -180, 180],
    ["altitude", "Altitude, m", -12000, 100000],
    ["heading", "Course, °", 0, 360],
    ["velocity", "Speed, m/s", 0, 10000],
    ["horizAccuracy", "Accuracy, m", 0, 100000],
    ["vertAccuracy", "Vertical, m", 0, 100000],
]);

/** @param {Position} position */
function locationCommand(position) {
    const { latitude, longitude, altitude, horizAccuracy, vertAccuracy, heading, velocity } =
        position;
    const numbers = [latitude, longitude, altitude, horizAccuracy, vertAccuracy, heading, velocity];
    return "location " + numbers.map((number) => Number(number.toFixed(7))).join(" ");
}

/** @type {Position} */
const NOWHERE = { latitude: 0, longitude: 0, altitude: 0, horizAccuracy: 10, vertAccuracy: 10,
    heading: 0, velocity: 0 };

/** @param {Device} device */
function positionOf(device) {
    return device.state().position || NOWHERE;
}

/** @param {Device} device */
function setUpPositionForm(device) {
    const form = byId("position", HTMLFormElement);
    const lost = byId("lost", HTMLInputElement);
    const inputs = FIELDS.map(([name, , min, max]) => element("input", { id: "at-" + name,
        type: "number", min: String(min), max: String(max), step: "any", required: true }));
    const fields = byId("position-fields", HTMLElement);
    let isChanged = false; // on the way to the button, the fields keep what was entered
    replaceChildren(fields, FIELDS.map(([, label], n) =>
        element("label", { className: "field" }, label, inputs[n])));

    fields.addEventListener("input", () => {
        isChanged = true;
    });
    form.addEventListener("focusout", ({ relatedTarget }) => {
        isChanged = isChanged && relatedTarget instanceof Node && form.contains(relatedTarget);
    });
    form.addEventListener("submit", (event) => {
        event.preventDefault();
        isChanged = false;
        const position = Object.assign({}, ...FIELDS.map(([name], n) =>
            ({ [name]: inputs[n].valueAsNumber })));
        device.act(locationCommand(position));
    });
    lost.addEventListener("change",
        () => device.act(lost.checked ? "location lost" : "location found"));
    device.onState(["position"], ({ position }) => {
        if (position && !isChanged && !isBeingEdited(fields)) {
            FIELDS.forEach(([name], n) => {
                inputs[n].value = String(Number(position[name].toFixed(7)));
            });
        }
    });
    device.onState(["lost"], (state) => {
        lost.checked = typeof state.lost === "number";
    });
}

/**
 * @param {Device} device
 * @param {ReturnType<typeof createMap>} map
 */
function setUpRoute(device, map) {
    const speed = byId("walk-speed", HTMLInputElement);
    const walk = byId("walk", HTMLButtonElement);
    const pause = byId("walk-pause", HTMLButtonElement);
    /** @type {Place[]} */
    let route = [];
    /** @type {{route: Place[], isPaused: boolean} | null} */
    let walked = null;

    function show() {
        const whole = [positionOf(device), ...route];
        const length = lengthOf(whole);
        const seconds = Math.round(length / (speed.valueAsNumber || 1));
        byId("route-length", HTMLElement).textContent = route.length === 0
            ? "Click the map to lay one."
            : `${metresText(length)}, ${Math.floor(seconds / 60)} min ${seconds % 60} s`;
        walk.disabled = route.length === 0;
        byId("route-clear", HTMLButtonElement).hidden = route.length === 0;
        map.show({ route });
    }

    /** @param {Place[]} places */
    function follow(places) {
        const from = placeText(positionOf(device));
        return device.act(`walk ${speed.value} ${from} ${places.map(placeText).join(" ")}`);
    }

    walk.addEventListener("click", async () => {
        if (speed.reportValidity() && await follow(route)) {
            walked = { route: [positionOf(device), ...route], isPaused: false };
            route = [];
            show();
        }
    });
    pause.addEventListener("click", async () => {
        const here = positionOf(device);
        if (walked && walked.isPaused) {
            walked.isPaused = !await follow(restOf(walked.route, here));
        } else if (walked) {
            walked.isPaused = await device.act(locationCommand({ ...here, velocity: 0 }));
        }
        pause.textContent = walked && walked.isPaused ? "Go on" : "Pause";
    });
    byId("route-clear", HTMLButtonElement).addEventListener("click", () => {
        route = [];
        show();
    });
    speed.addEventListener("input", show);
    device.onState(["state"], ({ state }) => {
        const isMoving = state.movement === "walking";
        pause.hidden = !walked || !(isMoving || walked.isPaused);
    });
    device.reset.listen(() => {
        route = [];
        walked = null;
        show();
    });
    show();
    return {
        /** @param {Place} place */
        add: (place) => {
            route = [...route, place];
            show();
        },
    };
}

/** @param {Device} device */
function setUpTracks(device) {
    const picker = byId("track-file", HTMLInputElement);
    const panel = byId("panel-world", HTMLElement);
    const factor = byId("track-factor", HTMLInputElement);

    /** @param {FileList | null} files */
    async function play(files) {
        if (!files || files.length === 0 || !factor.reportValidity()) {
            return;
        }
        try {
            const content = await files[0].text();
            const { output } = await device.connected()
                .track(files[0].name, content, factor.valueAsNumber);
            if (output) {
                device.showError(output);
            }
        } catch (error) {
            device.showError(messageOf(error).replace(device.root() + "/", ""));
        }
    }

    byId("track-pick", HTMLButtonElement).addEventListener("click", () => picker.click());
    picker.addEventListener("change", async () => {
        await play(picker.files);
        picker.value = "";
    });
    panel.addEventListener("dragover", (event) => {
        event.preventDefault();
        panel.classList.add("takes-file");
    });
    ["dragleave", "drop"].forEach((name) => panel.addEventListener(name,
        () => panel.classList.remove("takes-file")));
    panel.addEventListener("drop", (event) => {
        event.preventDefault();
        play(event.dataTransfer ? event.dataTransfer.files : null);
    });
}

/** @param {Device} device */
export function setUpWorld(device) {
    const canvas = byId("map", HTMLCanvasElement);
    const keep = byId("map-follow", HTMLButtonElement);
    const map = createMap(canvas);
    const send = createSender(device, PAUSE);
    const route = setUpRoute(device, map);
    /** @type {Position | null} the place to which the device is being dragged */
    let dragged = null;
    /** @type {Place[]} */
    let travelled = [];
    let keepsInView = true;

    /** @param {boolean} isOn */
    function keepInView(isOn) {
        keepsInView = isOn;
        keep.setAttribute("aria-pressed", String(isOn));
        if (isOn) {
            map.view.center(positionOf(device));
        }
    }

    setUpPositionForm(device);
    setUpTracks(device);
    setUpMapInput(canvas, {
        isOnDevice: map.isOnDevice,
        zoom: (steps, x, y) => map.view.zoom(steps, x, y),
        move: (right, down) => {
            if (right !== 0 || down !== 0) {
                keepInView(false);
            }
            map.view.move(right, down);
        },
        dragDevice: (x, y) => {
            dragged = { ...positionOf(device), ...map.view.placeAt(x, y), velocity: 0 };
            map.show({ position: dragged });
            send(locationCommand(dragged), true);
        },
        dropDevice: () => {
            dragged = null;
        },
        click: (x, y) => route.add(map.view.placeAt(x, y)),
        home: () => keepInView(true),
    });
    byId("zoom-in", HTMLButtonElement).addEventListener("click", () => map.view.zoom(1));
    byId("zoom-out", HTMLButtonElement).addEventListener("click", () => map.view.zoom(-1));
    keep.addEventListener("click", () => keepInView(!keepsInView));

    device.onState(["position", "lost"], ({ position, lost }) => {
        if (dragged || !position) {
            return;
        }
        const isFirst = travelled.length === 0;
        travelled = [...travelled, position].slice(-MOST_TRAVELLED);
        map.show({ position, travelled, isLost: typeof lost === "number" });
        if (isFirst) {
            map.view.center(position);
        } else if (keepsInView) {
            map.view.keepInView(position);
        }
        byId("map-hint", HTMLElement).textContent = typeof lost === "number"
            ? "The device does not know its position." : HINT;
    });
    device.settings.listen(({ tiles }) => map.setTiles(tiles));
    device.reset.listen(() => {
        travelled = [];
        map.show({ position: null, travelled, route: [] });
    });
}
