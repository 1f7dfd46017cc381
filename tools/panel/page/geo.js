/** Places on earth, and where they are on a map in Mercator's projection. */

/** @typedef {{latitude: number, longitude: number}} Place */
/** @typedef {{x: number, y: number}} Point of the map at zoom 0, where it is 256 wide and high */

const EARTH_RADIUS = 6371008.8;
const MAP_SIZE = 256;
const METRES_AT_EQUATOR = 2 * Math.PI * 6378137 / MAP_SIZE;
const HIGHEST_LATITUDE = 85.0511;

/** @param {number} degrees */
export function radians(degrees) {
    return degrees * Math.PI / 180;
}

/**
 * In metres.
 *
 * @param {Place} one
 * @param {Place} other
 */
export function distance(one, other) {
    const up = Math.sin(radians(other.latitude - one.latitude) / 2);
    const across = Math.sin(radians(other.longitude - one.longitude) / 2);
    const chord = up * up + Math.cos(radians(one.latitude)) * Math.cos(radians(other.latitude)) *
        across * across;
    return 2 * EARTH_RADIUS * Math.asin(Math.min(1, Math.sqrt(chord)));
}

/** @param {Place[]} places */
export function lengthOf(places) {
    return places.slice(1).reduce((sum, place, n) => sum + distance(places[n], place), 0);
}

/**
 * @param {Place} place
 * @returns {Point}
 */
export function project({ latitude, longitude }) {
    const within = Math.max(-HIGHEST_LATITUDE, Math.min(HIGHEST_LATITUDE, latitude));
    const north = Math.log(Math.tan(Math.PI / 4 + radians(within) / 2));
    return { x: MAP_SIZE * (longitude / 360 + 0.5), y: MAP_SIZE * (0.5 - north / (2 * Math.PI)) };
}

/**
 * @param {Point} point
 * @returns {Place}
 */
export function placeAt({ x, y }) {
    const north = (0.5 - y / MAP_SIZE) * 2 * Math.PI;
    const longitude = (x / MAP_SIZE - 0.5) * 360;
    return {
        latitude: Math.atan(Math.sinh(north)) * 180 / Math.PI,
        longitude: ((longitude + 180) % 360 + 360) % 360 - 180,
    };
}

/**
 * How many metres are one unit of the map there.
 *
 * @param {number} latitude
 */
export function metresPerUnit(latitude) {
    return METRES_AT_EQUATOR * Math.cos(radians(latitude));
}

/**
 * The round number that is at least this: 1, 2 or 5, times a power of ten.
 *
 * @param {number} least
 */
export function roundStep(least) {
    const power = 10 ** Math.floor(Math.log10(least));
    const digit = [1, 2, 5].find((one) => one * power >= least * 0.9999) || 10;
    return digit * power;
}

/** @param {number} metres */
export function metresText(metres) {
    if (metres >= 10000) {
        return `${Math.round(metres / 1000)} km`;
    }
    return metres >= 1000 ? `${(metres / 1000).toFixed(1).replace(/\.0$/, "")} km`
        : `${Math.round(metres * 10) / 10} m`;
}

/**
 * The rest of a route from the place on it that is closest.
 *
 * @param {Place[]} route
 * @param {Place} here
 */
export function restOf(route, here) {
    let [closest, next] = [Infinity, 0];
    for (let n = 1; n < route.length; ++n) {
        const detour = distance(route[n - 1], here) + distance(here, route[n]) -
            distance(route[n - 1], route[n]);
        if (detour < closest) {
            [closest, next] = [detour, n];
        }
    }
    return route.slice(next);
}

/** @param {Place} place */
export function placeText({ latitude, longitude }) {
    return `${latitude.toFixed(6)},${longitude.toFixed(6)}`;
}
