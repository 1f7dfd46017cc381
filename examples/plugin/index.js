// The page of the calculator: it has the keys and the display, and the application calculates.
"use strict";

const METHODS = { "+": "add", "-": "subtract", "*": "multiply", "/": "divide" };
const LONGEST_ENTRY = 12;

const display = document.getElementById("display");
const tape = document.getElementById("tape");
const buttons = document.querySelectorAll("button");

let left = null; // the number in front of the operation
let operation = null; // the method that waits for its second number
let isEntering = false; // whether a digit continues the number in the display

function show(text) {
    display.value = text;
    display.classList.remove("error");
}

function startAnew(text) {
    left = operation = null;
    isEntering = false;
    show(text);
}

// The application answers at once. What it refuses is an Error with its own words.
function calculate() {
    try {
        startAnew(component[operation](left, display.value));
    } catch (error) {
        startAnew(error.message);
        display.classList.add("error");
    }
}

function enter(character) {
    const text = isEntering ? display.value : "0";
    isEntering = true;
    if (text.length < LONGEST_ENTRY && !(character === "." && text.includes("."))) {
        show(text === "0" && character !== "." ? character : text + character);
    }
}

function operate(key) {
    if (operation && isEntering) {
        calculate();
    }
    if (display.classList.contains("error")) {
        return;
    }
    left = display.value;
    operation = METHODS[key];
    isEntering = false;
}

function press(key) {
    if (/^[0-9.]$/.test(key)) {
        enter(key);
    } else if (key in METHODS) {
        operate(key);
    } else if (key === "Enter" && operation) {
        calculate();
    } else if (key === "Escape") {
        startAnew("0");
    } else if (key === "Backspace" && isEntering) {
        show(display.value.slice(0, -1).replace(/^-?$/, "0"));
    } else if (key === "n" && Number(display.value)) {
        show(display.value.startsWith("-") ? display.value.slice(1) : "-" + display.value);
    }
}

function end(sentence) {
    startAnew(sentence);
    display.classList.add("error");
    buttons.forEach((button) => { button.disabled = true; });
}

document.getElementById("keys").addEventListener("click", (event) => {
    if (event.target.dataset.key) {
        press(event.target.dataset.key);
    }
});

// Enter calculates, wherever the focus is. The space bar presses the button that has it.
document.addEventListener("keydown", (event) => {
    const key = { "=": "Enter", ",": "." }[event.key] || event.key;
    const button = document.querySelector(`[data-key="${CSS.escape(key)}"]`);
    if (button && !event.ctrlKey && !event.metaKey && !event.altKey) {
        event.preventDefault();
        button.click();
        button.animate({ filter: ["brightness(0.8)", "none"] }, 200);
    }
});

document.getElementById("off").addEventListener("click", () => component.quit());

// The application reports each calculation.
component.on("calculated", (term, result) => {
    const line = document.createElement("li");
    line.textContent = `${term} = ${result}`;
    tape.append(line);
    tape.scrollTop = tape.scrollHeight;
});

window.addEventListener("tavend", (event) => end(event.detail));
