/** The map: a graticule with a scale, or tiles, and on it the device, its way and a route. */
import { contextOf } from "./dom.js";
import { metresPerUnit, metresText, radians, roundStep } from "./geo.js";
import { MapView } from "./mapview.js";
import { createTiles } from "./tiles.js";

/** @typedef {import("./geo.js").Place} Place */
/** @typedef {import("./device.js").Position} Position */
/**
 * @typedef {Object} Pen
 * @property {CanvasRenderingContext2D} context
 * @property {MapView} view
 * @property {(name: string) => string} color of the style sheet
 */
/**
 * What is drawn on the map.
 *
 * @typedef {Object} Content
 * @property {Position | null} position
 * @property {boolean} isLost
 * @property {Place[]} travelled
 * @property {Place[]} route
 */

const FINGER = 18;
const LINE_DISTANCE = 110;
const MOST_LINES = 40;

/**
 * @param {number} degrees
 * @param {number} digits
 * @param {string} sides
 */
function degreesText(degrees, digits, sides) {
    return `${Math.abs(degrees).toFixed(digits)}° ${sides[degrees < 0 ? 1 : 0]}`;
}

/**
 * @param {CanvasRenderingContext2D} context
 * @param {...number[]} points
 */
function drawLine(context, ...points) {
    context.beginPath();
    points.forEach(([x, y]) => context.lineTo(x, y));
    context.stroke();
}

/** @param {Pen} pen */
function drawGraticule({ context, view, color }) {
    const corner = view.placeAt(0, 0);
    const step = roundStep(360 / (256 * view.scale) * LINE_DISTANCE);
    const digits = Math.max(0, -Math.floor(Math.log10(step)));
    context.lineWidth = 1;
    context.strokeStyle = color("--map-line");
    context.fillStyle = color("--muted");
    context.font = "11px system-ui, sans-serif";
    for (let n = 0; n < MOST_LINES; ++n) {
        const longitude = (Math.ceil(corner.longitude / step) + n) * step;
        const latitude = (Math.floor(corner.latitude / step) - n) * step;
        const x = Math.round(view.pixelOf({ latitude: 0, longitude }).x) + 0.5;
        const y = Math.round(view.pixelOf({ latitude, longitude: 0 }).y) + 0.5;
        drawLine(context, [x, 0], [x, view.height]);
        drawLine(context, [0, y], [view.width, y]);
        context.textAlign = "left";
        context.fillText(degreesText(longitude, digits, "EW"), x + 4, view.height - 6);
        context.textAlign = "right";
        if (y > 50) {
            context.fillText(degreesText(latitude, digits, "NS"), view.width - 6, y - 4);
        }
    }
}

/** @param {Pen} pen */
function drawScale({ context, view, color }) {
    const metres = roundStep(view.metresPerPixel * 60);
    const right = view.width - 14;
    const left = right - metres / view.metresPerPixel;
    context.strokeStyle = color("--text");
    context.fillStyle = color("--text");
    context.lineWidth = 1.5;
    drawLine(context, [left, 18], [left, 22], [right, 22], [right, 18]);
    context.textAlign = "right";
    context.fillText(metresText(metres), right - 4, 16);
}

/**
 * @param {Pen} pen
 * @param {Place[]} places
 */
function trace({ context, view }, places) {
    drawLine(context, ...places.map((place) => view.pixelOf(place)).map(({ x, y }) => [x, y]));
}

/**
 * @param {Pen} pen
 * @param {{x: number, y: number}} center
 * @param {number} radius
 * @param {string} fill
 * @param {string} stroke
 */
function disc({ context, color }, { x, y }, radius, fill, stroke) {
    context.beginPath();
    context.arc(x, y, radius, 0, 2 * Math.PI);
    context.fillStyle = color(fill);
    context.fill();
    context.strokeStyle = color(stroke);
    context.stroke();
}

/**
 * @param {Pen} pen
 * @param {Content} content
 */
function drawRoute(pen, { route, position }) {
    const { context, view, color } = pen;
    context.strokeStyle = color("--accent");
    context.lineWidth = 2;
    context.setLineDash([6, 5]);
    trace(pen, position && route.length > 0 ? [position, ...route] : route);
    context.setLineDash([]);
    route.forEach((place) => disc(pen, view.pixelOf(place), 5, "--surface", "--accent"));
}

/**
 * @param {Pen} pen
 * @param {Position} position
 * @param {boolean} isLost
 */
function drawDevice(pen, position, isLost) {
    const { context, view, color } = pen;
    const at = view.pixelOf(position);
    const perPixel = metresPerUnit(position.latitude) / view.scale;
    const main = isLost ? "--muted" : "--accent";
    context.lineWidth = 1;
    disc(pen, at, Math.min(position.horizAccuracy / perPixel, 5000), "--accent-veil",
        "--accent-line");
    context.save();
    context.translate(at.x, at.y);
    context.rotate(radians(position.heading));
    context.beginPath();
    context.moveTo(0, -21);
    context.lineTo(6.5, -9);
    context.lineTo(-6.5, -9);
    context.fillStyle = color(main);
    context.fill();
    context.restore();
    context.lineWidth = 3;
    disc(pen, at, 8, main, "--marker-ring");
}

/** @param {HTMLCanvasElement} canvas */
export function createMap(canvas) {
    const context = contextOf(canvas);
    const view = new MapView(canvas, requestDraw);
    const tiles = createTiles(requestDraw);
    let isDrawing = false;
    /** @type {Content} */
    let content = { position: null, isLost: false, travelled: [], route: [] };

    function draw() {
        const ratio = window.devicePixelRatio || 1;
        const style = getComputedStyle(canvas);
        const color = (/** @type {string} */ name) => style.getPropertyValue(name).trim();
        const pen = { context, view, color };
        isDrawing = false;
        canvas.width = view.width * ratio;
        canvas.height = view.height * ratio;
        context.scale(ratio, ratio);
        context.lineJoin = "round";
        tiles.draw(context, view);
        drawGraticule(pen);
        context.lineWidth = 3;
        context.strokeStyle = color("--trail");
        trace(pen, content.travelled);
        drawRoute(pen, content);
        if (content.position) {
            drawDevice(pen, content.position, content.isLost);
        }
        drawScale(pen);
    }

    function requestDraw() {
        if (!isDrawing && canvas.clientWidth > 0) {
            isDrawing = true;
            requestAnimationFrame(draw);
        }
    }

    new ResizeObserver(requestDraw).observe(canvas);
    window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", requestDraw);

    return {
        view,
        setTiles: tiles.setTemplate,
        /** @param {Partial<Content>} changes */
        show: (changes) => {
            content = { ...content, ...changes };
            requestDraw();
        },
        /**
         * @param {number} x
         * @param {number} y
         */
        isOnDevice: (x, y) => {
            const at = content.position && view.pixelOf(content.position);
            return at !== null && Math.hypot(at.x - x, at.y - y) <= FINGER;
        },
    };
}
