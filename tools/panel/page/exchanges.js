/** Which replies of the journal belong to which request. */

/** @typedef {import("./device.js").Entry} Entry */
/** @typedef {{request: Entry, replies: Entry[]}} Exchange */

const MOST_REPLIES = 1000;

/**
 * The number of the request that the entry is, or belongs to.
 *
 * @param {Entry} entry
 * @returns {number | undefined}
 */
function tokenOf(entry) {
    const found = /^token (\d+)$/.exec(String(entry.outcome));
    return found ? Number(found[1]) : entry.token;
}

export function createExchanges() {
    /** @type {Map<number, Exchange>} */
    const exchanges = new Map();

    /** @param {Entry} entry */
    function of(entry) {
        const token = tokenOf(entry);
        return token === undefined ? undefined : exchanges.get(token);
    }

    return {
        of,
        /** @param {Entry} entry */
        add: (entry) => {
            const token = tokenOf(entry);
            const exchange = of(entry);
            if (token !== undefined && token !== entry.token) {
                exchanges.set(token, { request: entry, replies: [] });
            } else if (exchange && entry.what === "reply") {
                exchange.replies = [...exchange.replies.slice(1 - MOST_REPLIES), entry];
            }
        },
        forget: () => exchanges.clear(),
        /**
         * What a row says of it.
         *
         * @param {Entry} entry
         */
        note: (entry) => {
            const exchange = of(entry);
            if (!exchange) {
                return "";
            }
            const count = exchange.replies.length;
            if (exchange.request === entry) {
                return count === 0 ? "open" : `${count} ${count === 1 ? "reply" : "replies"}`;
            }
            return entry.what === "reply" ? `after ${entry.at - exchange.request.at} ms` : "";
        },
        /**
         * A request's replies, or a reply's request.
         *
         * @param {Entry} entry
         */
        others: (entry) => {
            const exchange = of(entry);
            if (!exchange) {
                return [];
            }
            return exchange.request === entry ? exchange.replies.slice(-20) : [exchange.request];
        },
    };
}
