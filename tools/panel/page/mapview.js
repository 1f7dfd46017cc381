/** Which part of the earth the map shows. */
import { metresPerUnit, placeAt, project } from "./geo.js";

/** @typedef {import("./geo.js").Place} Place */

const FIRST_ZOOM = 16;
const MARGIN = 60;

/** All coordinates are pixels of the page, from the canvas's top left. */
export class MapView {
    /**
     * @param {HTMLCanvasElement} canvas
     * @param {() => void} onChange
     */
    constructor(canvas, onChange) {
        this.canvas = canvas;
        this.onChange = onChange;
        this.middle = project({ latitude: 0, longitude: 0 });
        this.zoomLevel = FIRST_ZOOM;
    }

    get width() {
        return this.canvas.clientWidth;
    }

    get height() {
        return this.canvas.clientHeight;
    }

    get scale() {
        return 2 ** this.zoomLevel;
    }

    /** At the middle of the map. */
    get metresPerPixel() {
        return metresPerUnit(placeAt(this.middle).latitude) / this.scale;
    }

    /** @param {Place} place */
    pixelOf(place) {
        const point = project(place);
        return { x: (point.x - this.middle.x) * this.scale + this.width / 2,
            y: (point.y - this.middle.y) * this.scale + this.height / 2 };
    }

    /**
     * @param {number} x
     * @param {number} y
     */
    pointAt(x, y) {
        return { x: this.middle.x + (x - this.width / 2) / this.scale,
            y: this.middle.y + (y - this.height / 2) / this.scale };
    }

    /**
     * @param {number} x
     * @param {number} y
     */
    placeAt(x, y) {
        return placeAt(this.pointAt(x, y));
    }

    /**
     * @param {number} right
     * @param {number} down
     */
    move(right, down) {
        this.middle = { x: this.middle.x - right / this.scale,
            y: this.middle.y - down / this.scale };
        this.onChange();
    }

    /**
     * Zooms, and keeps what is at this pixel there.
     *
     * @param {number} steps
     * @param {number} [x]
     * @param {number} [y]
     */
    zoom(steps, x = this.width / 2, y = this.height / 2) {
        const fixed = this.pointAt(x, y);
        this.zoomLevel = Math.max(1, Math.min(22, this.zoomLevel + steps));
        this.middle = { x: fixed.x - (x - this.width / 2) / this.scale,
            y: fixed.y - (y - this.height / 2) / this.scale };
        this.onChange();
    }

    /** @param {Place} place */
    center(place) {
        this.middle = project(place);
        this.onChange();
    }

    /**
     * Brings the place into the middle if it is at the edge or beyond.
     *
     * @param {Place} place
     */
    keepInView(place) {
        const { x, y } = this.pixelOf(place);
        const isInside = x > MARGIN && x < this.width - MARGIN && y > MARGIN &&
            y < this.height - MARGIN;
        if (!isInside && this.width > 0) {
            this.center(place);
        }
    }
}
