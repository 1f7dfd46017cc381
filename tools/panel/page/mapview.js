/** What the map shows, and where: its middle, its scale, and the drawing. */
import { metresPerUnit, metresText, placeAt, project, radians, roundStep }
    from "./geo.js";
import { createTiles } from "./tiles.js";

/** @typedef {import("./geo.js").Place} Place */
/** @typedef {import("./device.js").Position} Position */

const FINGER = 18;
const FIRST_ZOOM = 16;
const LINE_DISTANCE = 110;

/**
 * What is drawn on the map.
 *
 * @typedef {Object} Content
 * @property {Position | null} position
 * @property {boolean} isLost
 * @property {Place[]} travelled
 * @property {Place[]} route
 */

/** @param {HTMLCanvasElement} canvas */
export function createMapView(canvas) {
    const context = canvas.getContext("2d");
    const tiles = createTiles(() => requestDraw());
    let middle = project({ latitude: 0, longitude: 0 });
    let zoom = FIRST_ZOOM;
    let isDrawing = false;
    /** @type {Content} */
    let content = { position: null, isLost: false, travelled: [], route: [] };

    const scale = () => 2 ** zoom;
    const width = () => canvas.clientWidth;
    const height = () => canvas.clientHeight;

    /** @param {Place} place */
    function pixelOf(place) {
        const point = project(place);
        return { x: (point.x - middle.x) * scale() + width() / 2,
            y: (point.y - middle.y) * scale() + height() / 2 };
    }

    /**
     * @param {number} x
     * @param {number} y
     */
    function pointAt(x, y) {
        return { x: middle.x + (x - width() / 2) / scale(),
            y: middle.y + (y - height() / 2) / scale() };
    }

    /** @param {string} name */
    function color(name) {
        return getComputedStyle(canvas).getPropertyValue(name).trim();
    }

    function drawGraticule() {
        const northWest = placeAt(pointAt(0, 0));
        const perPixel = 360 / (256 * scale());
        const step = roundStep(perPixel * LINE_DISTANCE);
        const digits = Math.max(0, -Math.floor(Math.log10(step)));
        const firstEast = Math.ceil(northWest.longitude / step);
        const firstNorth = Math.floor(northWest.latitude / step);
        context.lineWidth = 1;
        context.strokeStyle = color("--map-line");
        context.fillStyle = color("--muted");
        context.font = "11px system-ui, sans-serif";
        for (let n = 0; n < 40; ++n) {
            const longitude = (firstEast + n) * step;
            const latitude = (firstNorth - n) * step;
            const { x } = pixelOf({ latitude: 0, longitude });
            const { y } = pixelOf({ latitude, longitude: 0 });
            line(Math.round(x) + 0.5, 0, Math.round(x) + 0.5, height());
            line(0, Math.round(y) + 0.5, width(), Math.round(y) + 0.5);
            context.fillText(`${Math.abs(longitude).toFixed(digits)}° ${longitude < 0 ? "W" : "E"}`,
                x + 4, height() - 6);
            context.fillText(`${Math.abs(latitude).toFixed(digits)}° ${latitude < 0 ? "S" : "N"}`,
                6, y - 4);
        }
    }

    /**
     * @param {number} fromX
     * @param {number} fromY
     * @param {number} toX
     * @param {number} toY
     */
    function line(fromX, fromY, toX, toY) {
        context.beginPath();
        context.moveTo(fromX, fromY);
        context.lineTo(toX, toY);
        context.stroke();
    }

    function drawScale() {
        const perPixel = metresPerUnit(placeAt(middle).latitude) / scale();
        const metres = roundStep(perPixel * 60);
        const right = width() - 14;
        const left = right - metres / perPixel;
        const y = 22;
        context.strokeStyle = color("--text");
        context.fillStyle = color("--text");
        context.lineWidth = 1.5;
        context.beginPath();
        context.moveTo(left, y - 4);
        context.lineTo(left, y);
        context.lineTo(right, y);
        context.lineTo(right, y - 4);
        context.stroke();
        context.textAlign = "right";
        context.fillText(metresText(metres), right - 4, y - 6);
        context.textAlign = "left";
    }

    /** @param {Place[]} places */
    function trace(places) {
        context.beginPath();
        places.map(pixelOf).forEach(({ x, y }) => context.lineTo(x, y));
        context.stroke();
    }

    function drawRoute() {
        const { route, position } = content;
        context.strokeStyle = color("--accent");
        context.lineWidth = 2;
        context.setLineDash([6, 5]);
        trace(position && route.length > 0 ? [position, ...route] : route);
        context.setLineDash([]);
        route.map(pixelOf).forEach(({ x, y }) => disc(x, y, 5, color("--surface"), color("--accent")));
    }

    /**
     * @param {number} x
     * @param {number} y
     * @param {number} radius
     * @param {string} fill
     * @param {string} stroke
     */
    function disc(x, y, radius, fill, stroke) {
        context.beginPath();
        context.arc(x, y, radius, 0, 2 * Math.PI);
        context.fillStyle = fill;
        context.fill();
        context.strokeStyle = stroke;
        context.stroke();
    }

    /** @param {Position} position */
    function drawDevice(position) {
        const { x, y } = pixelOf(position);
        const perPixel = metresPerUnit(position.latitude) / scale();
        const radius = Math.min(position.horizAccuracy / perPixel, 5000);
        const main = content.isLost ? color("--muted") : color("--accent");
        context.lineWidth = 1;
        disc(x, y, radius, color("--accent-veil"), color("--accent-line"));
        context.save();
        context.translate(x, y);
        context.rotate(radians(position.heading));
        context.beginPath();
        context.moveTo(0, -21);
        context.lineTo(6.5, -9);
        context.lineTo(-6.5, -9);
        context.closePath();
        context.fillStyle = main;
        context.fill();
        context.restore();
        context.lineWidth = 3;
        context.shadowColor = "rgb(0 0 0 / 35%)";
        context.shadowBlur = 5;
        disc(x, y, 8, main, color("--marker-ring"));
        context.shadowBlur = 0;
    }

    function draw() {
        isDrawing = false;
        const ratio = window.devicePixelRatio || 1;
        if (width() === 0) {
            return;
        }
        canvas.width = width() * ratio;
        canvas.height = height() * ratio;
        context.scale(ratio, ratio);
        context.lineJoin = "round";
        tiles.draw(context, { middle, zoom, width: width(), height: height() });
        drawGraticule();
        context.lineWidth = 3;
        context.strokeStyle = color("--trail");
        trace(content.travelled);
        drawRoute();
        if (content.position) {
            drawDevice(content.position);
        }
        drawScale();
    }

    function requestDraw() {
        if (!isDrawing) {
            isDrawing = true;
            requestAnimationFrame(draw);
        }
    }

    new ResizeObserver(requestDraw).observe(canvas);
    window.matchMedia("(prefers-color-scheme: dark)").addEventListener("change", requestDraw);

    return {
        setTiles: tiles.setTemplate,
        /** @param {Partial<Content>} changes */
        show: (changes) => {
            content = { ...content, ...changes };
            requestDraw();
        },
        /**
         * @param {number} x in pixels of the page, as all here
         * @param {number} y
         */
        placeAt: (x, y) => placeAt(pointAt(x, y)),
        middle: () => placeAt(middle),
        /**
         * @param {number} x
         * @param {number} y
         */
        isOnDevice: (x, y) => {
            const at = content.position && pixelOf(content.position);
            return Boolean(at) && Math.hypot(at.x - x, at.y - y) <= FINGER;
        },
        /**
         * @param {number} right
         * @param {number} down
         */
        move: (right, down) => {
            middle = { x: middle.x - right / scale(), y: middle.y - down / scale() };
            requestDraw();
        },
        /**
         * Zooms, and keeps what is at this pixel there.
         *
         * @param {number} steps
         * @param {number} [x]
         * @param {number} [y]
         */
        zoom: (steps, x = width() / 2, y = height() / 2) => {
            const fixed = pointAt(x, y);
            zoom = Math.max(1, Math.min(22, zoom + steps));
            middle = { x: fixed.x - (x - width() / 2) / scale(),
                y: fixed.y - (y - height() / 2) / scale() };
            requestDraw();
        },
        /** @param {Place} place */
        center: (place) => {
            middle = project(place);
            requestDraw();
        },
        /**
         * Brings the place into view if it is not.
         *
         * @param {Place} place
         */
        keepInView: (place) => {
            const { x, y } = pixelOf(place);
            const margin = Math.min(60, width() / 4);
            const isInside = x > margin && x < width() - margin && y > margin && y < height() - margin;
            if (!isInside && width() > 0) {
                middle = project(place);
                requestDraw();
            }
        },
    };
}
