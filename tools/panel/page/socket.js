/** The connection to the panel's server: JSON texts both ways, and pictures from it. */

/**
 * @typedef {Object} Handlers
 * @property {(settings: Settings) => void} settings
 * @property {(devices: RunningDevice[]) => void} devices
 * @property {(root: string) => void} opened
 * @property {(reason: string) => void} refused
 * @property {(lines: Object<string, any>[]) => void} watch
 * @property {(count: number) => void} lost
 * @property {(how: string) => void} ended
 * @property {(picture: ArrayBuffer) => void} picture
 * @property {() => void} closed
 */

/** @typedef {{version: string, tiles: string | null, canPlay: boolean, header: string}} Settings */
/** @typedef {{root: string, device: string, program: string, process: number}} RunningDevice */
/** @typedef {{id: number, output?: string, error?: string, status?: number}} Answer */
/** @typedef {ReturnType<typeof connect>} Connection */

const MESSAGES = /** @type {const} */ (
    ["settings", "devices", "opened", "refused", "watch", "lost", "ended"]);

function address() {
    const url = new URL("socket", document.baseURI);
    url.protocol = url.protocol.replace("http", "ws");
    return url.href;
}

/** @param {Handlers} handlers */
export function connect(handlers) {
    const socket = new WebSocket(address());
    /** @type {Map<number, {resolve: (answer: Answer) => void, reject: (error: Error) => void}>} */
    const pending = new Map();
    let lastId = 0;
    socket.binaryType = "arraybuffer";

    /** @param {Object<string, any>} message */
    function send(message) {
        if (socket.readyState === WebSocket.OPEN) {
            socket.send(JSON.stringify(message));
        }
    }

    /**
     * @param {Object<string, any>} message
     * @returns {Promise<Answer>}
     */
    function request(message) {
        if (socket.readyState !== WebSocket.OPEN) {
            return Promise.reject(new Error("The connection to the device is closed."));
        }
        const id = ++lastId;
        return new Promise((resolve, reject) => {
            pending.set(id, { resolve, reject });
            send({ ...message, id });
        });
    }

    /** @param {Answer} answer */
    function settle(answer) {
        const asker = pending.get(answer.id);
        pending.delete(answer.id);
        if (asker && answer.error !== undefined) {
            asker.reject(new Error(answer.error.trim()));
        } else if (asker) {
            asker.resolve(answer);
        }
    }

    socket.addEventListener("message", (event) => {
        if (event.data instanceof ArrayBuffer) {
            handlers.picture(event.data);
            return;
        }
        const message = JSON.parse(event.data);
        if ("id" in message) {
            settle(message);
        }
        for (const name of MESSAGES) {
            if (name in message) {
                handlers[name](/** @type {never} */ (message[name]));
            }
        }
    });
    socket.addEventListener("close", () => {
        for (const { reject } of pending.values()) {
            reject(new Error("The connection to the device was closed."));
        }
        pending.clear();
        handlers.closed();
    });

    return {
        /** @param {string} root */
        open: (root) => send({ open: root }),
        /** @param {boolean} isWanted */
        frames: (isWanted) => send({ frames: isWanted }),
        shown: () => send({ shown: true }),
        /**
         * Carries out a command.
         *
         * @param {string} line
         */
        ask: async (line) => (await request({ ask: line })).output || "",
        /**
         * @param {string} name
         * @param {string} content
         * @param {number} factor
         */
        track: (name, content, factor) => request({ track: name, content, factor }),
        /** @param {string} scenario */
        play: (scenario) => request({ play: scenario }),
    };
}
