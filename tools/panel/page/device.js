/** The device that is shown: its state as it was last told, and what the page wants of it. */

/** @typedef {import("./socket.js").Connection} Connection */
/** @typedef {Object<string, any> & {at: number, kind: string, what: string}} Entry */
/** @typedef {{line: number, text: string, state: string, reason?: string}} Step */
/**
 * @typedef {Object} Service
 * @property {string} uri
 * @property {string | null} answer
 * @property {boolean} silent
 * @property {number | number[]} delay in milliseconds
 * @property {boolean} changed whether a command has changed it
 */

/**
 * @typedef {Object} Position
 * @property {number} latitude
 * @property {number} longitude
 * @property {number} altitude
 * @property {number} horizAccuracy
 * @property {number} vertAccuracy
 * @property {number} heading
 * @property {number} velocity
 */

/**
 * What `watch` tells, and before that, what is not known yet.
 *
 * @typedef {Object} State
 * @property {string} device
 * @property {string} program
 * @property {number} openCalls
 * @property {number | null} battery
 * @property {string[]} refused
 * @property {Object<string, string>} state
 * @property {{now: number, pace: string, speed: number, paused: boolean}} time
 * @property {{at: number, what: string}[]} queue
 * @property {Position | null} position
 * @property {number | null} lost
 * @property {{on: boolean, heading: number | null, follows: boolean, held: boolean}} compass
 * @property {Service[]} services
 * @property {Object<string, any>} preferences
 * @property {Object<string, string>} properties
 * @property {Object<string, string>} appinfo
 * @property {{width: number, height: number} | null} screen
 * @property {{methods: string[]} | null} page
 */

/** @type {State} */
const UNKNOWN = {
    device: "", program: "", openCalls: 0, battery: null, refused: [], state: {},
    time: { now: 0, pace: "real", speed: 1, paused: false }, queue: [], position: null, lost: null,
    compass: { on: false, heading: null, follows: false, held: false }, services: [],
    preferences: {}, properties: {}, appinfo: {}, screen: null, page: null,
};

/** @typedef {ReturnType<typeof createDevice>} Device */

/**
 * A list of functions that are called, in order, with what happens.
 *
 * @template T
 */
function createEvent() {
    /** @type {((value: T) => void)[]} */
    const listeners = [];
    return {
        /** @param {(value: T) => void} listener */
        listen: (listener) => {
            listeners.push(listener);
        },
        /** @param {T} value */
        tell: (value) => listeners.forEach((listener) => listener(value)),
    };
}

/** @param {unknown} error */
export function messageOf(error) {
    return error instanceof Error ? error.message : String(error);
}

/** @param {(message: string) => void} showError */
export function createDevice(showError) {
    let state = UNKNOWN;
    let root = "";
    /** @type {Connection | null} */
    let connection = null;
    const changed = /** @type {ReturnType<typeof createEvent<Set<string>>>} */ (createEvent());
    const entries = /** @type {ReturnType<typeof createEvent<Entry[]>>} */ (createEvent());
    const recorded = /** @type {ReturnType<typeof createEvent<string[]>>} */ (createEvent());
    const step = /** @type {ReturnType<typeof createEvent<Step>>} */ (createEvent());
    const reset = /** @type {ReturnType<typeof createEvent<void>>} */ (createEvent());
    const settings = /** @type {ReturnType<typeof createEvent<import("./socket.js").Settings>>} */ (
        createEvent());

    /** @param {Object<string, any>[]} lines */
    function take(lines) {
        const newEntries = lines.filter((line) => line.journal).map((line) => line.journal);
        const newLines = lines.filter((line) => line.recorded !== undefined)
            .map((line) => line.recorded);
        const changes = Object.assign({}, ...lines.map((line) => line.state));
        if (Object.keys(changes).length > 0) {
            state = { ...state, ...changes };
            changed.tell(new Set(Object.keys(changes)));
        }
        if (newEntries.length > 0) {
            entries.tell(newEntries);
        }
        if (newLines.length > 0) {
            recorded.tell(newLines);
        }
        lines.filter((line) => line.step).forEach((line) => step.tell(line.step));
    }

    /** @returns {Connection} */
    function connected() {
        if (!connection) {
            throw new Error("There is no connection to the device.");
        }
        return connection;
    }

    /**
     * Carries out a command and shows why when it is refused. Tells whether it was carried out.
     *
     * @param {string} line
     */
    async function act(line) {
        try {
            await connected().ask(line);
            return true;
        } catch (error) {
            showError(messageOf(error));
            return false;
        }
    }

    return {
        state: () => state,
        connected,
        act,
        showError,
        take,
        entries,
        recorded,
        step,
        reset,
        settings,
        /** @param {Connection} to */
        connectTo: (to) => {
            connection = to;
        },
        root: () => root,
        /**
         * Begins anew with a device, which will tell everything.
         *
         * @param {string} itsRoot
         */
        forget: (itsRoot) => {
            root = itsRoot;
            state = UNKNOWN;
            changed.tell(new Set(Object.keys(state)));
            reset.tell();
        },
        /**
         * Calls the function when one of these members of the state has changed.
         *
         * @param {(keyof State)[]} names
         * @param {(state: State) => void} listener
         */
        onState: (names, listener) => changed.listen((changes) => {
            if (names.some((name) => changes.has(name))) {
                listener(state);
            }
        }),
    };
}

/** @param {string} line */
function firstWord(line) {
    return line.split(" ", 1)[0];
}

/**
 * Sends commands one after the other, and leaves out those that a newer one has overtaken: while
 * the device is busy, only the last of a movement counts.
 *
 * @param {Device} device
 * @param {number} [pause] in milliseconds, between two commands
 */
export function createSender(device, pause = 0) {
    /** @type {{line: string, canBeOvertaken: boolean}[]} */
    const queue = [];
    let isBusy = false;

    async function sendAll() {
        isBusy = true;
        for (let next = queue.shift(); next; next = queue.shift()) {
            await device.act(next.line);
            if (pause > 0 && next.canBeOvertaken) {
                await new Promise((resolve) => setTimeout(resolve, pause));
            }
        }
        isBusy = false;
    }

    /**
     * @param {string} line
     * @param {boolean} [canBeOvertaken]
     */
    return (line, canBeOvertaken = false) => {
        const last = queue[queue.length - 1];
        if (last && last.canBeOvertaken && firstWord(last.line) === firstWord(line)) {
            queue.pop();
        }
        queue.push({ line, canBeOvertaken });
        if (!isBusy) {
            sendAll();
        }
    };
}
