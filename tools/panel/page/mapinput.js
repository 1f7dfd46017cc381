/** The map under mouse, fingers and keys. */

const CLICK_DISTANCE = 5;

/**
 * @typedef {Object} Actions
 * @property {(x: number, y: number) => boolean} isOnDevice
 * @property {(x: number, y: number) => void} dragDevice
 * @property {() => void} dropDevice
 * @property {(right: number, down: number) => void} move
 * @property {(steps: number, x?: number, y?: number) => void} zoom
 * @property {(x: number, y: number) => void} click
 * @property {() => void} home
 */

/**
 * @param {HTMLCanvasElement} canvas
 * @param {Actions} actions
 */
export function setUpMapInput(canvas, actions) {
    /** @type {Map<number, {x: number, y: number}>} */
    const fingers = new Map();
    let isDevice = false;
    let isClick = false;
    let start = { x: 0, y: 0 };

    /** @param {MouseEvent} event */
    function pixel(event) {
        const box = canvas.getBoundingClientRect();
        return { x: event.clientX - box.left, y: event.clientY - box.top };
    }

    function spread() {
        const [one, other] = Array.from(fingers.values());
        return Math.hypot(one.x - other.x, one.y - other.y);
    }

    /** @param {PointerEvent} event */
    function pinch(event) {
        const before = spread();
        fingers.set(event.pointerId, pixel(event));
        const [one, other] = Array.from(fingers.values());
        if (before > 0) {
            actions.zoom(Math.log2(spread() / before), (one.x + other.x) / 2,
                (one.y + other.y) / 2);
        }
    }

    canvas.addEventListener("pointerdown", (event) => {
        const at = pixel(event);
        canvas.setPointerCapture(event.pointerId);
        fingers.set(event.pointerId, at);
        isClick = fingers.size === 1;
        isDevice = isClick && actions.isOnDevice(at.x, at.y);
        start = at;
    });
    canvas.addEventListener("pointermove", (event) => {
        const at = pixel(event);
        const before = fingers.get(event.pointerId);
        if (!before) {
            canvas.classList.toggle("grabs", actions.isOnDevice(at.x, at.y));
            return;
        }
        if (fingers.size === 2) {
            pinch(event);
            return;
        }
        isClick = isClick && Math.hypot(at.x - start.x, at.y - start.y) < CLICK_DISTANCE;
        fingers.set(event.pointerId, at);
        if (isDevice && !isClick) {
            actions.dragDevice(at.x, at.y);
        } else if (!isDevice) {
            actions.move(at.x - before.x, at.y - before.y);
        }
    });
    canvas.addEventListener("pointerup", (event) => {
        const at = pixel(event);
        fingers.delete(event.pointerId);
        if (isClick && !isDevice && event.button === 0) {
            actions.click(at.x, at.y);
        } else if (isDevice && !isClick) {
            actions.dropDevice();
        }
        isDevice = false;
        isClick = false;
    });
    canvas.addEventListener("pointercancel", (event) => fingers.delete(event.pointerId));
    canvas.addEventListener("wheel", (event) => {
        const { x, y } = pixel(event);
        actions.zoom(-Math.sign(event.deltaY) * Math.min(1, Math.abs(event.deltaY) / 200), x, y);
        event.preventDefault();
    }, { passive: false });
    canvas.addEventListener("keydown", (event) => {
        const middle = () => actions.click(canvas.clientWidth / 2, canvas.clientHeight / 2);
        const keys = /** @type {Object<string, () => void>} */ ({
            "ArrowLeft": () => actions.move(40, 0), "ArrowRight": () => actions.move(-40, 0),
            "ArrowUp": () => actions.move(0, 40), "ArrowDown": () => actions.move(0, -40),
            "+": () => actions.zoom(0.5), "=": () => actions.zoom(0.5),
            "-": () => actions.zoom(-0.5), "Enter": middle, "Home": actions.home,
        });
        if (keys[event.key] && !event.ctrlKey && !event.metaKey) {
            keys[event.key]();
            event.preventDefault();
        }
    });
}
