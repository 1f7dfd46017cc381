/** Pictures of the application's screen, as they come from the server. */

const LINE_FEED = 10;

/** @typedef {{width: number, height: number, format?: string, parts: number[][]}} Head */

/** @param {ArrayBuffer} picture */
function split(picture) {
    const bytes = new Uint8Array(picture);
    const end = bytes.indexOf(LINE_FEED);
    const head = /** @type {Head} */ (JSON.parse(new TextDecoder().decode(bytes.subarray(0, end))));
    return { head, data: bytes.subarray(end + 1) };
}

/**
 * @param {Uint8Array} rgb
 * @param {number} width
 * @param {number} height
 */
function imageOf(rgb, width, height) {
    const image = new ImageData(width, height);
    const pixels = new Uint32Array(image.data.buffer);
    for (let n = 0, from = 0; n < pixels.length; ++n, from += 3) {
        pixels[n] = 0xff000000 | rgb[from + 2] << 16 | rgb[from + 1] << 8 | rgb[from];
    }
    return image;
}

/**
 * Draws what has changed. Tells whether the screen's size is another one than before.
 *
 * @param {HTMLCanvasElement} canvas
 * @param {ArrayBuffer} picture
 */
export async function draw(canvas, picture) {
    const { head, data } = split(picture);
    const isResized = canvas.width !== head.width || canvas.height !== head.height;
    if (isResized) {
        canvas.width = head.width;
        canvas.height = head.height;
    }
    const context = /** @type {CanvasRenderingContext2D} */ (canvas.getContext("2d"));
    let at = 0;
    for (const [x, y, width, height, length] of head.parts) {
        const size = head.format === "png" ? length : width * height * 3;
        const part = data.subarray(at, at + size);
        at += size;
        if (head.format === "png") {
            const bitmap = await createImageBitmap(new Blob([part], { type: "image/png" }));
            context.drawImage(bitmap, x, y);
        } else {
            context.putImageData(imageOf(part, width, height), x, y);
        }
    }
    return isResized;
}
