// Runs in a world of its own in every frame of a page: the page's scripts can neither see nor
// disturb it. Reports to the library what the web engine does not.
(() => {
  'use strict';
  const library = window.webkit.messageHandlers.qorix;
  const isMainFrame = window === window.top;

  // An element with the name of a method of the document or of a form hides that method, in every
  // world. The functions below cannot be hidden.
  const method = (type, name) => Function.prototype.call.bind(type.prototype[name]);
  const getter = (type, name) =>
    Function.prototype.call.bind(Object.getOwnPropertyDescriptor(type.prototype, name).get);
  const listen = method(EventTarget, 'addEventListener');
  const stopListening = method(EventTarget, 'removeEventListener');
  const nodeType = getter(Node, 'nodeType');
  const firstChild = getter(Node, 'firstChild');
  const nextSibling = getter(Node, 'nextSibling');
  const parentNode = getter(Node, 'parentNode');
  const namespaceOf = getter(Element, 'namespaceURI');
  const localNameOf = getter(Element, 'localName');
  const attribute = method(Element, 'getAttribute');
  const attributeNames = method(Element, 'getAttributeNames');
  const addressOfA = getter(HTMLAnchorElement, 'href');
  const addressOfArea = getter(HTMLAreaElement, 'href');

  const isElement = (target) => {
    try {
      return nodeType(target) === Node.ELEMENT_NODE;
    } catch (noNode) {
      return false;
    }
  };

  const isLink = (target) =>
    isElement(target) && attributeNames(target).some((name) => /^(xlink:)?href$/.test(name));

  // Where the link leads; empty for a kind of link whose address is not easily read.
  const addressOf = (link) => {
    for (const address of [addressOfA, addressOfArea]) {
      try {
        return address(link);
      } catch (another) {
        // a link of another kind
      }
    }
    return '';
  };

  const isTextAt = (node, {x, y}) => {
    const range = new Range();
    range.selectNodeContents(node);
    return [...range.getClientRects()].some(
      (rect) => x >= rect.left && x < rect.right && y >= rect.top && y < rect.bottom);
  };

  // Whether the point, which hit `element` and no element inside it, lies on its own text.
  const hasTextAt = (element, point) => {
    for (let node = firstChild(element); node !== null; node = nextSibling(node)) {
      if (nodeType(node) === Node.TEXT_NODE && isTextAt(node, point)) {
        return true;
      }
    }
    return false;
  };

  // Runs `task` as soon as what runs now has ended. Unlike a timer it is never delayed.
  const tasks = [];
  const {port1: doorbell, port2: porch} = new MessageChannel();
  porch.onmessage = () => tasks.shift()();
  const soon = (task) => {
    tasks.push(task);
    doorbell.postMessage(null);
  };

  // The engine asks whether it may follow the link after every listener has been called: what the
  // page's own listeners have made of the element by then counts. So a user's click is reported
  // again after each listener that changes the element. A script's click is reported again when it
  // has passed all listeners; if one stopped it, that is reported, too.
  const beginClick = ({target, link, last, type, inMainFrame, isScripted, textPoint}) => {
    if (link === undefined || !isElement(target)) {
      return;
    }
    const click = {
      key: Math.random(),
      isMainFrame: inMainFrame,
      isScripted,
      isSeenToEnd: false,
      isText: textPoint !== null && hasTextAt(target, textPoint),
      isHtmlElement: namespaceOf(target) === 'http://www.w3.org/1999/xhtml',
    };
    const report = (name) => library.postMessage({
      ...click,
      event: name,
      link: addressOf(link),
      id: attribute(target, 'id') || '',
      className: attribute(target, 'class') || '',
    });
    const atEnd = () => {
      click.isSeenToEnd = true;
      report('click');
    };
    const observer = new MutationObserver(() => report('click'));
    report('click');
    listen(last, type, atEnd, {once: true});
    if (!isScripted) {
      observer.observe(target, {attributes: true});
      observer.observe(link, {attributes: true});
    }
    soon(() => {
      stopListening(last, type, atEnd);
      observer.disconnect();
      report('clickOver');
    });
  };

  // A click by the keyboard hits no text.
  const textPointOf = (isByPointer, x, y) => (isByPointer ? {x, y} : null);

  const watchClick = (event) => {
    const path = event.composedPath();
    beginClick({
      target: path[0],
      link: path.find(isLink),
      last: path[path.length - 1],
      type: event.type,
      inMainFrame: isMainFrame,
      isScripted: !event.isTrusted,
      textPoint: textPointOf(event.isTrusted && event.detail !== 0, event.clientX, event.clientY),
    });
  };

  // In a frame that runs no scripts, clicks come from the user or from a script of another frame.
  const watchClickInFrame = (target, isByPointer, x, y) => {
    let link = target;
    while (link !== null && !isLink(link)) {
      link = parentNode(link);
    }
    beginClick({
      target,
      link: link === null ? undefined : link,
      last: window,
      type: 'click',
      inMainFrame: false,
      isScripted: false,
      textPoint: textPointOf(isByPointer, x, y),
    });
  };

  const reportLoad = () => library.postMessage({event: 'load'});

  window.addEventListener('click', watchClick, true);
  window.addEventListener('auxclick', watchClick, true);
  // A script is about to click on something below `root`, outside the document.
  window.addEventListener('qorixclick', ({relatedTarget: root}) => {
    listen(root, 'click', watchClick, {capture: true, once: true});
  }, true);
  if (!isMainFrame) {
    window.addEventListener('load', reportLoad);
  }

  // In frames that run no scripts none of these listeners is called. The library's module in the
  // web process listens there. In such a frame itself, its functions are missing.
  const {qorixOwnsFrame: ownsFrame, qorixWatchFrame: watchFrame} = window;
  if (ownsFrame !== undefined) {
    ownsFrame(document);
    const watch = ({target}) => isElement(target) &&
      ['iframe', 'frame', 'object'].includes(localNameOf(target)) &&
      watchFrame(target, watchClickInFrame, reportLoad);
    document.addEventListener('mouseover', watch, true);
    document.addEventListener('load', (event) => {
      if (watch(event)) {
        reportLoad();
      }
    }, true);
  }
})();
