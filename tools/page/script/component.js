/** `component`: the application as its page sees it, with its native methods as members. The server
 * puts this script before all others of the page; tav-component.d.ts describes what it defines. */
(function () {
    "use strict";

    /** @typedef {string | null} Text */
    /** @typedef {{call: string, arguments: Text[]}} Call */

    const MOST_LINES = 500;  // for the application's device in a second
    const LONGEST_LINE = 100000;

    const own = new URL(/** @type {HTMLScriptElement} */ (document.currentScript).src);
    const root = new URL("..", own);
    const page = own.searchParams.get("page");

    /** @param {string} name */
    function addressOf(name) {
        return new URL(`${name}?page=${page}`, own).href;
    }

    /**
     * As a text travels: to its first zero character, and without halves of characters.
     *
     * @param {string} text
     */
    function clean(text) {
        return text.split("\0", 1)[0].replace(/[\ud800-\udfff]/gu, "\ufffd");
    }

    // The end

    let end = "";
    let isLeaving = false;
    const ready = new Promise((resolve) => {
        if (document.readyState === "loading") {
            document.addEventListener("DOMContentLoaded", resolve);
        } else {
            resolve(undefined);
        }
    });

    /** @param {string} how */
    function lose(how) {
        if (!end) {
            end = how;
            ready.then(() => window.dispatchEvent(new CustomEvent("tavend", { detail: how })));
        }
    }

    window.addEventListener("pagehide", () => { isLeaving = true; });

    // Calls of native methods

    /**
     * @param {string} method
     * @param {any[]} values
     */
    function bodyOf(method, values) {
        const texts = values.map((value) =>
            value === null || value === undefined ? null : clean(`${value}`));
        return JSON.stringify({ method: clean(method), arguments: texts });
    }

    /**
     * What came of a request, or an Error.
     *
     * @param {number} status
     * @param {string} text
     * @returns {any}
     */
    function understand(status, text) {
        /** @type {any} */
        let answer = null;
        try {
            answer = JSON.parse(text);
        } catch (error) {
            throw new Error(status === 413 ? "The call is longer than 16 MiB."
                : `The page's server has refused the call (status ${status}).`);
        }
        if (status === 410) {
            lose(answer.error);
        }
        if ("error" in answer) {
            throw new Error(answer.error);
        }
        if ("exception" in answer) {
            throw new Error(answer.exception || "");
        }
        return answer;
    }

    const UNREACHABLE = "The page's server cannot be reached.";

    /**
     * @param {string} name
     * @param {string} body
     */
    function ask(name, body) {
        if (end) {
            throw new Error(end);
        }
        const request = new XMLHttpRequest();
        request.open("POST", addressOf(name), false);
        try {
            request.send(body);
        } catch (error) {
            throw new Error(UNREACHABLE);
        }
        return understand(request.status, request.responseText);
    }

    /**
     * @param {string} name
     * @param {string} body
     */
    async function askLater(name, body) {
        if (end) {
            throw new Error(end);
        }
        /** @type {Response} */
        let response;
        let text = "";
        try {
            response = await fetch(addressOf(name), { method: "POST", body });
            text = await response.text();
        } catch (error) {
            throw new Error(end || UNREACHABLE);
        }
        return understand(response.status, text);
    }

    /** @type {Set<string>} */
    let known = new Set();

    /** @returns {string[]} */
    function methods() {
        const names = ask("methods", "").methods;
        known = new Set(names);
        return names;
    }

    /**
     * @param {any} name
     * @param {string} caller
     */
    function requireName(name, caller) {
        if (typeof name !== "string") {
            throw new TypeError(`${caller} needs a name, a string`);
        }
    }

    // Functions of the page

    /** @type {Map<string, (...values: Text[]) => void>} */
    const listeners = new Map();
    /** @type {Call[]} */
    const calls = [];
    const turns = new MessageChannel();  // one task for each call

    turns.port2.onmessage = () => {
        const call = /** @type {Call} */ (calls.shift());
        const listener = listeners.get(call.call);
        if (listener) {
            listener(...call.arguments);
        } else {
            console.warn("nobody listens to " + call.call);
        }
    };

    // `component`

    /**
     * The function that stands for a native method, the same one each time.
     *
     * @param {Map<string, Function>} functions
     * @param {string} name
     * @param {(...values: any[]) => any} call
     */
    function methodOf(functions, name, call) {
        const found = functions.get(name)
            || Object.defineProperty((/** @type {any[]} */ ...values) => call(name, ...values),
                "name", { value: name });
        functions.set(name, found);
        return found;
    }

    const async = {
        methods: async () => /** @type {string[]} */ ((await askLater("methods", "")).methods),
        /**
         * @param {string} name
         * @param {any[]} values
         * @returns {Promise<Text>}
         */
        call: async (name, ...values) => {
            requireName(name, "component.async.call");
            return (await askLater("call", bodyOf(name, values))).reply;
        },
    };

    const target = {
        methods,
        /**
         * @param {string} name
         * @param {any[]} values
         * @returns {Text}
         */
        call: (name, ...values) => {
            requireName(name, "component.call");
            return ask("call", bodyOf(name, values)).reply;
        },
        /**
         * @param {string} name
         * @param {(...values: Text[]) => void} listener
         */
        on: (name, listener) => {
            requireName(name, "component.on");
            if (typeof listener !== "function") {
                throw new TypeError("component.on needs a function");
            }
            listeners.set(name, listener);
        },
        // Whether a method exists shows only when it is called; but a promise is none.
        async: new Proxy(async, {
            get: (members, name) => typeof name === "symbol" || name in members || name === "then"
                ? Reflect.get(members, name)
                : methodOf(laterFunctions, name, members.call),
        }),
    };
    const functions = new Map();
    const laterFunctions = new Map();

    /**
     * The members are the target's own, and then the native methods that exist.
     *
     * @param {object} members
     * @param {string | symbol} name
     * @returns {name is string}
     */
    function isNative(members, name) {
        return typeof name === "string" && !Object.prototype.hasOwnProperty.call(members, name)
            && (known.has(name) || methods().includes(name));
    }

    window.component = /** @type {any} */ (new Proxy(target, {
        has: (members, name) => isNative(members, name) || Reflect.has(members, name),
        get: (members, name) => isNative(members, name)
            ? methodOf(functions, name, members.call) : Reflect.get(members, name),
    }));

    // What the page and the application tell each other unasked

    const socket = new WebSocket(addressOf("socket").replace("http", "ws"));
    /** @type {object[]} */
    const early = [];
    /** @type {(picture: ArrayBuffer) => void} */
    let onPicture = () => {};

    /** @param {object} message */
    function tell(message) {
        if (socket.readyState === WebSocket.CONNECTING) {
            early.push(message);
        } else if (socket.readyState === WebSocket.OPEN) {
            socket.send(JSON.stringify(message));
        }
    }

    socket.binaryType = "arraybuffer";
    socket.addEventListener("open", () => early.splice(0).forEach(tell));
    socket.addEventListener("message", ({ data }) => {
        const message = data instanceof ArrayBuffer ? {} : JSON.parse(data);
        if (data instanceof ArrayBuffer) {
            onPicture(data);
        } else if ("end" in message) {
            lose(message.end);
        } else if ("ping" in message) {
            tell({ pong: true });
        } else {
            calls.push(message);
            ready.then(() => turns.port1.postMessage(null));
        }
    });
    socket.addEventListener("close", () => {
        if (!isLeaving) {
            lose("The connection to the application is closed.");
        }
    });

    // For plugin.js.
    Object.defineProperty(window, Symbol.for("tav.connection"), { value: {
        tell,
        clean,
        /** @param {(picture: ArrayBuffer) => void} show */
        onPicture: (show) => { onPicture = show; },
    } });

    // What goes wrong, and what is printed, is shown by the application's device too

    let lines = 0;

    /** @param {object} message */
    function report(message) {
        if (lines++ < MOST_LINES) {
            tell(message);
        }
        if (lines === 1) {
            setTimeout(() => {
                const lost = lines - MOST_LINES;
                lines = 0;
                if (lost > 0) {
                    report({ console: "warn", text: `${lost} lines were left out` });
                }
            }, 1000);
        }
    }

    /** @param {any} value */
    function textOf(value) {
        try {
            return String(value);
        } catch (error) {
            return "what cannot be described";
        }
    }

    for (const level of /** @type {("log" | "warn" | "error")[]} */ (["log", "warn", "error"])) {
        const print = console[level];
        console[level] = (...values) => {
            print.apply(console, values);
            report({ console: level,
                text: clean(values.map(textOf).join(" ").slice(0, LONGEST_LINE)) });
        };
    }

    /**
     * @param {string} file
     * @param {number | string} line
     * @param {any} thrown
     */
    function reportThrown(file, line, thrown) {
        const isOwn = file.startsWith(root.href);
        const name = (isOwn ? file.slice(root.href.length) : file).replace(/[?#].*/, "");
        const text = (thrown instanceof Error ? "" : "uncaught ") + textOf(thrown);
        report({ problem: clean(`${name || "page"}:${line}: ${text}`.slice(0, LONGEST_LINE)) });
    }

    window.addEventListener("error", (event) => {
        reportThrown(event.filename, event.lineno,
            event.error === undefined || event.error === null ? event.message : event.error);
    });
    window.addEventListener("unhandledrejection", ({ reason }) => {
        const place = /(https?:[^\s()]+?):(\d+)(:\d+)?\)?$/m.exec(reason && reason.stack || "");
        reportThrown(place ? place[1] : "", place ? place[2] : "?", reason);
    });

    ready.then(() => {
        if (document.querySelector("tav-plugin")) {
            const script = document.createElement("script");
            script.type = "module";
            script.src = new URL("plugin.js", own).href;
            document.head.append(script);
        }
    });
}());
