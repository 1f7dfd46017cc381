// What a page has of the application that is its plug-in. An editor knows it after
//     /// <reference path="tav-component.d.ts" />

/** A text, or null. */
type TavText = string | null;

/** A value that becomes a text: null and undefined become null, all others what String() makes. */
type TavValue = string | number | boolean | bigint | object | null | undefined;

interface TavComponent {
    /** The names of the native methods, in the order of their registration. */
    methods(): string[];

    /**
     * Calls a native method, and waits for its reply. Throws an Error with the text of the method's
     * exception, or with the reason when the application gives no answer.
     */
    call(name: string, ...values: TavValue[]): TavText;

    /**
     * Lets the application call a function of the page, in place of the one that had the name.
     * Functions are called one after the other, while no script runs, once the document is there.
     */
    on(name: string, listener: (...values: any[]) => void): void;

    /** The same as promises, which do not keep the page waiting. */
    readonly async: TavAsyncComponent;

    /** The native methods. */
    [method: string]: any;
}

interface TavAsyncComponent {
    methods(): Promise<string[]>;
    call(name: string, ...values: TavValue[]): Promise<TavText>;
    [method: string]: (...values: any[]) => Promise<any>;
}

declare const component: TavComponent;

interface Window {
    component: TavComponent;
}

interface WindowEventMap {
    /** The plug-in is lost; the detail is a sentence that says how. Every later call throws it. */
    tavend: CustomEvent<string>;
}
