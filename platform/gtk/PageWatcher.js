// Runs in a world of its own in every frame of a page: the page's scripts can neither see nor
// disturb it. Tells the library what its web engine does not.
(() => {
  'use strict';
  const library = window.webkit.messageHandlers.qorix;
  const isMainFrame = window === window.top;

  const isHtmlElement = (node) =>
    node.nodeType === Node.ELEMENT_NODE && node.namespaceURI === 'http://www.w3.org/1999/xhtml';

  const isInside = (rect, x, y) =>
    x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom;

  // The text that lies at the point, which is somewhere inside of `element`, or null. The caret's
  // position names the nearest text, which need not be there.
  const textAtPoint = (element, x, y) => {
    const caret = document.caretRangeFromPoint(x, y);
    const node = caret === null ? null : caret.startContainer;
    if (node === null || node.nodeType !== Node.TEXT_NODE || !element.contains(node)) {
      return null;
    }
    const range = document.createRange();
    range.selectNodeContents(node);
    return [...range.getClientRects()].some((rect) => isInside(rect, x, y)) ? node : null;
  };

  const reportClick = (event) => {
    const target = event.target;
    const isElement = target instanceof Node && target.nodeType === Node.ELEMENT_NODE;
    // The keyboard clicks too, but hits nothing.
    if (!isElement || (event.isTrusted && event.detail === 0)) {
      library.postMessage({ event: 'noClick' });
      return;
    }
    const text = event.isTrusted ? textAtPoint(target, event.clientX, event.clientY) : null;
    const element = text === null ? target : text.parentElement;
    library.postMessage({
      event: 'click',
      isMainFrame,
      isText: text !== null,
      isHtmlElement: element !== null && isHtmlElement(element),
      id: element === null ? '' : element.id,
      className: element === null ? '' : element.getAttribute('class') || '',
    });
    // By then the click has had its effect; what navigates later is something else.
    setTimeout(() => library.postMessage({ event: 'noClick' }), 0);
  };

  window.addEventListener('click', reportClick, true);
  window.addEventListener('auxclick', reportClick, true);
  if (!isMainFrame) {
    window.addEventListener('load', () => library.postMessage({ event: 'load' }));
  }
})();
