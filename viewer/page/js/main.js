document.title = 'nerova-polarize view';
