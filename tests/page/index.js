"use strict";

window.heard = [];
component.on("back", (text, other) => {
    heard.push(other === null ? text : "not null");
    if (text === "question") {
        component.answer("42");
    }
});
window.addEventListener("tavend", (event) => heard.push(event.detail));
