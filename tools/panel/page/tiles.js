/** Pictures of the map from a tile server, if its address was given. */

const SIZE = 256;
const MOST_KEPT = 300;
const FINEST = 19;

/** @param {() => void} onLoad */
export function createTiles(onLoad) {
    /** @type {Map<string, HTMLImageElement>} */
    const images = new Map();
    /** @type {string | null} */
    let template = null;

    /**
     * @param {number} z
     * @param {number} x
     * @param {number} y
     */
    function image(z, x, y) {
        const address = template.replace("{z}", String(z)).replace("{x}", String(x))
            .replace("{y}", String(y));
        let found = images.get(address);
        if (!found) {
            found = new Image();
            found.addEventListener("load", onLoad);
            found.src = address;
            images.set(address, found);
        }
        if (images.size > MOST_KEPT) {
            images.delete(images.keys().next().value);
        }
        return found;
    }

    return {
        /** @param {string | null} address */
        setTemplate: (address) => {
            template = address;
            onLoad();
        },
        /**
         * @param {CanvasRenderingContext2D} context
         * @param {{middle: {x: number, y: number}, zoom: number, width: number, height: number}} view
         */
        draw: (context, { middle, zoom, width, height }) => {
            if (!template) {
                return;
            }
            const z = Math.min(FINEST, Math.round(zoom));
            const size = SIZE * 2 ** (zoom - z);
            const count = 2 ** z;
            const left = middle.x * 2 ** zoom - width / 2;
            const top = middle.y * 2 ** zoom - height / 2;
            for (let y = Math.max(0, Math.floor(top / size)); y * size < top + height && y < count; ++y) {
                for (let x = Math.floor(left / size); x * size < left + width; ++x) {
                    const tile = image(z, (x % count + count) % count, y);
                    if (tile.complete && tile.naturalWidth > 0) {
                        context.drawImage(tile, x * size - left, y * size - top, size + 0.5, size + 0.5);
                    }
                }
            }
        },
    };
}
