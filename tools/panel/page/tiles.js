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

    /** @param {string} address */
    function load(address) {
        const image = new Image();
        image.addEventListener("load", onLoad);
        image.src = address;
        images.set(address, image);
        if (images.size > MOST_KEPT) {
            images.delete(images.keys().next().value);
        }
        return image;
    }

    /**
     * @param {string} form
     * @param {number} z
     * @param {number} x
     * @param {number} y
     */
    function imageAt(form, z, x, y) {
        const address = form.replace("{z}", String(z)).replace("{x}", String(x))
            .replace("{y}", String(y));
        return images.get(address) || load(address);
    }

    return {
        /** @param {string | null} address */
        setTemplate: (address) => {
            template = address;
            onLoad();
        },
        /**
         * @param {CanvasRenderingContext2D} context
         * @param {import("./mapview.js").MapView} view
         */
        draw: (context, { middle, zoomLevel, scale, width, height }) => {
            if (!template) {
                return;
            }
            const z = Math.min(FINEST, Math.round(zoomLevel));
            const size = SIZE * scale / 2 ** z;
            const count = 2 ** z;
            const left = middle.x * scale - width / 2;
            const top = middle.y * scale - height / 2;
            const last = Math.min(count, (top + height) / size);
            for (let y = Math.max(0, Math.floor(top / size)); y < last; ++y) {
                for (let x = Math.floor(left / size); x * size < left + width; ++x) {
                    const tile = imageAt(template, z, (x % count + count) % count, y);
                    if (tile.complete && tile.naturalWidth > 0) {
                        context.drawImage(tile, x * size - left, y * size - top, size, size);
                    }
                }
            }
        },
    };
}
