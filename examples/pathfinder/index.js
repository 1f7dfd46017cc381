// The page of the pathfinder: its controls, and what the application reports.
"use strict";

const controls = document.getElementById("controls");
const progress = document.getElementById("progress");
const notice = document.getElementById("status");
const results = document.getElementById("results");

let land = 3;

// Calls a method without waiting for it: the page stays responsive whatever the application does.
async function ask(method, ...values) {
    try {
        await component.async[method](...values);
    } catch (error) {
        notice.textContent = error.message;
    }
}

function rowOf(method) {
    const name = [...controls.method.options].find((option) => option.value === method).text;
    const row = [...results.rows].find((one) => one.cells[0].textContent === name);
    if (row) {
        return row;
    }
    const added = results.insertRow();
    for (let cell = 0; cell < 3; ++cell) {
        added.insertCell();
    }
    added.cells[0].textContent = name;
    return added;
}

controls.addEventListener("submit", (event) => {
    event.preventDefault();
    notice.textContent = "Searching…";
    ask("find", controls.method.value, controls.speed.value);
});

document.getElementById("brushes").addEventListener("change", (event) => {
    ask("brush", event.target.value);
});

document.getElementById("new-land").addEventListener("click", () => {
    ask("land", ++land);
    results.replaceChildren();
    notice.textContent = "";
    progress.value = 0;
});

component.on("progress", (looked, all) => {
    progress.max = all;
    progress.value = looked;
});

component.on("found", (minutes, looked) => {
    const { cells } = rowOf(controls.method.value);
    cells[1].textContent = minutes < 0 ? "none" : `${minutes} min`;
    cells[2].textContent = looked;
    notice.textContent = minutes < 0 ? "There is no way." : `The way takes ${minutes} minutes.`;
});

// The application may still have the brush of an earlier page.
ask("brush", controls.brush.value);

window.addEventListener("tavend", (event) => {
    notice.textContent = event.detail;
    for (const control of controls.elements) {
        control.disabled = true;
    }
});
