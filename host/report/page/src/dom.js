// Small helpers for the document. Text from the file is only ever set as text.

export const byId = (id) => document.getElementById(id);

export function element(tag, attributes = {}, ...children) {
  const node = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (value !== undefined && value !== false) node.setAttribute(name, value);
  }
  node.append(...children);
  return node;
}

// A term and its description, kept together.
export const fact = (term, ...description) => element("div", {}, element("dt", {}, term), element("dd", {}, ...description));

export const escaped = (text) => text.replace(/[&<>"]/g, (c) => ({ "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" })[c]);

export function scale(node, low, high) {
  node.replaceChildren(element("span", {}, low), element("i", { "aria-hidden": "true" }), element("span", {}, high));
  return node.querySelector("i");
}
